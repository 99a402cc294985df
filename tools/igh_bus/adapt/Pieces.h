// Which bits of which items lie where, and how that is called.
#ifndef IGH_BUS_ADAPT_PIECES_H
#define IGH_BUS_ADAPT_PIECES_H

#include "adapt/Target.h"

namespace igh_bus::adapt {

constexpr unsigned int BITS_PER_BYTE = 8;

constexpr unsigned int bytesUp(unsigned int bit) {
  return (bit + BITS_PER_BYTE - 1) / BITS_PER_BYTE * BITS_PER_BYTE;
}

// The first item that ends behind this bit.
std::size_t itemAt(const SmLayout& layout, unsigned int bit);

// Gaps left out; bits are counted from `start`.
std::vector<Piece> piecesOf(const SmLayout& layout, unsigned int start, unsigned int stop);

// " low", " high" or " [bits 8..15]": what so many bits from `from` on are of the item.
std::string partText(const Item& item, unsigned int from, unsigned int count);

// By what its pieces have in common, else by the first and the last; also says whether it is one whole item.
void nameJoined(const SmLayout& layout, TargetEntry& entry);

} // namespace igh_bus::adapt

#endif
