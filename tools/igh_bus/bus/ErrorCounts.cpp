#include "bus/ErrorCounts.h"

#include <igh_master.h>

namespace igh_bus {

const char* errorText(int code) {
  switch (code) {
  case ETHERCAT_ERROR_WORKING_COUNTER:
    return "working counter incomplete";
  case ETHERCAT_ERROR_LINK_DOWN:
    return "link down";
  case ETHERCAT_ERROR_SLAVE_STATE:
    return "slave refused a state or stopped answering";
  case ETHERCAT_ERROR_SLAVE_ADDED:
    return "slaves added";
  case ETHERCAT_ERROR_SLAVE_LOST:
    return "slaves lost";
  default:
    return "no error";
  }
}

} // namespace igh_bus
