// Where the slave has its process data: the truth that an adapted description must not move.
#ifndef IGH_BUS_ADAPT_LAYOUT_H
#define IGH_BUS_ADAPT_LAYOUT_H

#include "adapt/Source.h"

namespace igh_bus::adapt {

// An entry of the slave in its place.
struct Item {
  SourceEntry entry;
  std::string name; // unique in the slave; empty for gaps
  std::uint16_t pdo = 0;
  std::string pdoName;
  std::size_t pdoNumber = 0; // in its sync manager
  unsigned int start = 0;    // bit in the sync manager
  bool free = false;         // the master does not write it into the slave
  unsigned int end() const { return start + entry.bits; }
};

struct SmLayout {
  unsigned int index = 0;
  bool output = false;
  bool ascending = true;     // in the order in which the library puts PDOs, by their index
  bool assigned = false;     // by the master, so that PDOs keep their bits
  std::uint16_t shelter = 0; // a PDO that the master cannot write, to hold all entries; 0 when none is needed
  std::vector<SourcePdo> pdos;
  std::vector<Item> items;
  unsigned int bits() const { return items.empty() ? 0 : items.back().end(); }
  unsigned int bytes() const { return (bits() + 7) / 8; }
};

// Ascending sync managers. `pdos` have theirs. An order that cannot be kept is told in `open`.
std::vector<SmLayout> layoutOf(const SourceDevice& device, const std::vector<SourcePdo>& pdos,
                               std::vector<std::string>& open);

} // namespace igh_bus::adapt

#endif
