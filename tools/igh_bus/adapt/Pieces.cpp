#include "adapt/Pieces.h"

#include "adapt/Names.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus::adapt {

std::size_t itemAt(const SmLayout& layout, unsigned int bit) {
  const auto& items = layout.items;
  const auto found =
      std::partition_point(items.begin(), items.end(), [&](const Item& one) { return one.end() <= bit; });
  return static_cast<std::size_t>(found - items.begin());
}

std::vector<Piece> piecesOf(const SmLayout& layout, unsigned int start, unsigned int stop) {
  const auto& items = layout.items;
  std::vector<Piece> pieces;
  for (auto i = itemAt(layout, start); i < items.size() && items[i].start < stop; ++i) {
    const auto from = std::max(start, items[i].start);
    const auto to = std::min(stop, items[i].end());
    if (from < to && !items[i].entry.gap())
      pieces.push_back({i, from - items[i].start, from - start, to - from});
  }
  return pieces;
}

std::string partText(const Item& item, unsigned int from, unsigned int count) {
  if (from == 0)
    return " low";
  return from + count == item.entry.bits ? " high" : format(" [bits %u..%u]", from, from + count - 1);
}

void nameJoined(const SmLayout& layout, TargetEntry& entry) {
  const auto item = [&](std::size_t i) -> const Item& { return layout.items[i]; };
  const auto& first = item(entry.pieces.front().item);
  const auto& last = item(entry.pieces.back().item);
  if (entry.pieces.size() == 1) {
    entry.whole = entry.pieces[0].count == first.entry.bits;
    entry.name = entry.whole ? first.name
                             : first.name + partText(first, entry.pieces[0].sourceBit, entry.pieces[0].count);
    return;
  }
  std::vector<std::string> names;
  bool onePdo = true;
  for (const auto& piece : entry.pieces) {
    names.push_back(item(piece.item).entry.name);
    onePdo = onePdo && item(piece.item).pdoNumber == first.pdoNumber;
  }
  entry.name = onePdo ? commonStart(names) : "";
  if (entry.name.empty())
    entry.name = first.name + " .. " + last.name;
}

} // namespace igh_bus::adapt
