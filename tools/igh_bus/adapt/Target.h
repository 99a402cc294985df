// The device as it is written for the library.
#ifndef IGH_BUS_ADAPT_TARGET_H
#define IGH_BUS_ADAPT_TARGET_H

#include "adapt/Layout.h"

namespace igh_bus::adapt {

// Bits of an item of the sync manager's layout, as they lie in an entry.
struct Piece {
  std::size_t item = 0;
  unsigned int sourceBit = 0; // the first one, in the item
  unsigned int bit = 0;       // where it lies in the entry
  unsigned int count = 0;
};

struct TargetEntry {
  std::string name;
  std::string type; // empty for gaps
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  unsigned int bits = 0;
  unsigned int start = 0;  // bit in the sync manager
  unsigned int window = 0; // bits that its type moves, when these are more than its own
  bool free = true;
  bool whole = false;        // stands for exactly one item
  std::vector<Piece> pieces; // none for gaps
  bool gap() const { return index == 0; }
  // It takes its room, and no value is moved by its name.
  void disarm() {
    type.clear();
    window = 0;
    whole = false;
  }
};

// Stands for one item of the slave, bit for bit, and nothing else.
inline bool isItself(const SmLayout& layout, const TargetEntry& entry) {
  return entry.window == 0 && entry.pieces.size() == 1 && entry.pieces[0].count == entry.bits &&
         layout.items[entry.pieces[0].item].entry.bits == entry.bits;
}

// A part of an item that lies in no byte of its own: it takes its room, and nothing more can be done with it.
inline bool isFragment(const TargetEntry& entry) {
  return !entry.gap() && entry.type.empty() && !entry.whole;
}

struct TargetPdo {
  std::uint16_t index = 0;
  std::string name;
  bool fixed = false;
  std::vector<TargetEntry> entries;
};

struct TargetSm {
  unsigned int index = 0;
  bool output = false;
  std::vector<TargetPdo> pdos;
};

} // namespace igh_bus::adapt

#endif
