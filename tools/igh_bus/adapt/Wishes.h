// What the command line and the slave itself say about one slave.
#ifndef IGH_BUS_ADAPT_WISHES_H
#define IGH_BUS_ADAPT_WISHES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace igh_bus::adapt {

struct Wishes {
  std::optional<std::string> mode;                // "none" for no clocks
  std::vector<std::uint16_t> pdos;                // empty: as the description has them
  std::map<unsigned int, std::uint32_t> modules;  // by slot, from 1
  std::map<unsigned int, std::uint32_t> reported; // those that the slave has; 0 for an empty slot
  bool operator==(const Wishes& other) const {
    return mode == other.mode && pdos == other.pdos && modules == other.modules && reported == other.reported;
  }
};

} // namespace igh_bus::adapt

#endif
