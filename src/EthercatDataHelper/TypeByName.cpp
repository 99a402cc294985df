#include "EthercatDataHelper/EthercatDataHelper.h"

#include <cstring>

namespace {

struct _TYPE_NAME {
  const char* name;
  ETHERCAT_DATA_TYPE type;
};

constexpr _TYPE_NAME CONVERTIBLE_TYPES[] = {
    {"SINT", DATA_TYPE_SINT}, {"USINT", DATA_TYPE_USINT}, {"INT", DATA_TYPE_INT},
    {"UINT", DATA_TYPE_UINT}, {"DINT", DATA_TYPE_DINT},   {"UDINT", DATA_TYPE_UDINT},
    {"REAL", DATA_TYPE_REAL}, {"LREAL", DATA_TYPE_LREAL},
};

} // namespace

ETHERCAT_DATA_TYPE CEthercatDataHelper::getTypeByName(const char* name) {
  for (const _TYPE_NAME& known : CONVERTIBLE_TYPES) {
    if (std::strcmp(known.name, name) == 0) {
      return known.type;
    }
  }
  return DATA_TYPE_INVALID;
}
