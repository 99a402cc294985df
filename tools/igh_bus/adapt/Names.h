// Names that mean one entry each.
#ifndef IGH_BUS_ADAPT_NAMES_H
#define IGH_BUS_ADAPT_NAMES_H

#include <cstdint>
#include <string>
#include <vector>

namespace igh_bus::adapt {

struct Named {
  std::string name;
  std::string pdo; // name of its PDO
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  bool settled = false; // unique among the settled ones, and stays
};

// The names made unique: one that is unique stays; a repeated one gets its PDO's name in front; one that is
// still repeated, or empty, its index and subindex behind.
std::vector<std::string> uniqueNames(const std::vector<Named>& entries);

// What the names have in common at their start, up to the end of a word; empty when it says too little.
std::string commonStart(const std::vector<std::string>& names);

} // namespace igh_bus::adapt

#endif
