#include "adapt/Windows.h"

#include "adapt/Pieces.h"
#include "adapt/Types.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

bool converts(const TargetEntry& entry) {
  const auto is = [&](Nature::Kind kind) { return entry.type == libraryType(kind, entry.bits); };
  return !entry.type.empty() && entry.start % BITS_PER_BYTE == 0 &&
         (is(Nature::UNSIGNED) || is(Nature::SIGNED) || is(Nature::REAL));
}

// As narrow as it can be without cutting an entry, before `end`.
void openWindow(const SmLayout& layout, TargetEntry& entry, unsigned int end) {
  const auto cut = [&](unsigned int bit) {
    const auto i = itemAt(layout, bit);
    return i < layout.items.size() && !layout.items[i].entry.gap() && layout.items[i].start < bit;
  };
  for (const unsigned int width : {8U, 16U, 32U}) {
    if (width < entry.bits || entry.start + width > end)
      continue;
    entry.window = width;
    if (!cut(entry.start + width))
      break;
  }
  if (entry.window == 0)
    return;
  entry.type = libraryType(Nature::UNSIGNED, entry.window);
  entry.whole = false;
  entry.pieces = piecesOf(layout, entry.start, entry.start + entry.window);
  nameJoined(layout, entry);
}

// Where the next value of its own begins, for each entry; behind the last entry nothing is moved.
std::vector<unsigned int> endsOf(const std::vector<TargetEntry*>& entries) {
  unsigned int end = 0;
  for (const auto* entry : entries)
    end = entry->gap() ? end : bytesUp(entry->start + entry->bits);
  std::vector<unsigned int> ends(entries.size());
  for (std::size_t i = entries.size(); i-- > 0;) {
    ends[i] = end;
    end = converts(*entries[i]) ? entries[i]->start : end;
  }
  return ends;
}

} // namespace

void openWindows(const SmLayout& layout, TargetSm& target) {
  std::vector<TargetEntry*> entries;
  for (auto& pdo : target.pdos) {
    for (auto& entry : pdo.entries)
      entries.push_back(&entry);
  }
  const auto ends = endsOf(entries);
  unsigned int open = 0; // up to which bit a window reaches
  for (std::size_t i = 0; i < entries.size(); ++i) {
    auto& entry = *entries[i];
    if (entry.gap() || entry.bits == 0 || converts(entry) || entry.start % BITS_PER_BYTE != 0 ||
        entry.start < open)
      continue;
    openWindow(layout, entry, ends[i]);
    open = entry.start + entry.window;
  }
}

} // namespace igh_bus::adapt
