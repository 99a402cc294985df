// What a run found out about one slave.
#ifndef IGH_BUS_REPORT_SLAVE_FACTS_H
#define IGH_BUS_REPORT_SLAVE_FACTS_H

#include "bus/ErrorCounts.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace igh_bus {

struct SlaveFacts {
  struct Error {
    int code;
    SlaveErrorCount count;
  };
  struct Seen {
    std::uint64_t cycle;
    std::string text;
  };

  std::size_t position;
  std::string name;
  std::uint16_t alias;
  std::string state; // at the end; "unknown" when nobody could look
  std::uint16_t alStatus;
  std::string alText;
  bool answers;
  std::vector<unsigned int> lostPorts;
  std::vector<Error> errors; // of which the library said that they are this slave's
  std::vector<Seen> seen;    // its troubles, in order
};

nlohmann::ordered_json seenData(const std::vector<SlaveFacts::Seen>& list);
nlohmann::ordered_json slavesData(const std::vector<SlaveFacts>& slaves);

} // namespace igh_bus

#endif
