#include "adapt/EntryMaker.h"

#include "adapt/Pieces.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int MOST = 255;    // bits of any entry: lengths have eight bits
constexpr unsigned int LONGEST = 248; // of these in whole bytes

unsigned int widthFor(unsigned int bits) {
  return bits >= 32 ? 32 : bits >= 16 ? 16 : BITS_PER_BYTE;
}

std::vector<unsigned int> widthsOf(const Nature& nature, bool elements, unsigned int bits) {
  std::vector<unsigned int> widths;
  for (unsigned int done = 0; done < bits; done += widths.back())
    widths.push_back(elements ? nature.elementBits : std::min(widthFor(bits - done), bits - done));
  return widths;
}

TargetEntry entryOf(const Item& item, const std::string& name, unsigned int start, unsigned int bits) {
  TargetEntry entry;
  entry.name = name;
  entry.index = item.entry.index;
  entry.subindex = item.entry.subindex;
  entry.start = start;
  entry.bits = bits;
  return entry;
}

} // namespace

EntryMaker::EntryMaker(const SmLayout& layout, const TypeTable& types, TargetSm& target)
    : m_layout(layout), m_types(types), m_target(target) {
  m_target.index = layout.index;
  m_target.output = layout.output;
  for (const auto& pdo : layout.pdos)
    m_target.pdos.push_back({pdo.index, pdo.name, pdo.fixed, {}});
  if (layout.shelter != 0) {
    m_target.pdos[0].index = layout.shelter;
    m_target.pdos[0].fixed = true;
  }
}

// Where the library would put PDOs in another order, one PDO holds them all.
void EntryMaker::add(TargetEntry entry, std::size_t pdoNumber) {
  m_target.pdos[m_layout.ascending ? pdoNumber : 0].entries.push_back(std::move(entry));
}

void EntryMaker::addGap(unsigned int start, unsigned int end, std::size_t pdoNumber, bool free) {
  for (; start < end; start += LONGEST) {
    TargetEntry gap;
    gap.start = start;
    gap.bits = std::min(end - start, LONGEST);
    gap.free = free;
    add(std::move(gap), pdoNumber);
  }
}

void EntryMaker::keep(std::size_t i) {
  const auto& one = item(i);
  if (one.entry.gap()) {
    addGap(one.start, one.end(), one.pdoNumber, one.free);
    return;
  }
  if (one.entry.bits > MOST) {
    cut(i);
    return;
  }
  auto entry = entryOf(one, one.name, one.start, one.entry.bits);
  entry.free = one.free;
  entry.whole = true;
  entry.pieces = {{i, 0, 0, one.entry.bits}};
  const auto type = libraryType(m_types.natureOf(one.entry.type).kind, one.entry.bits);
  entry.type = !type.empty() ? type : one.entry.bits != 0 ? one.entry.type : "";
  add(std::move(entry), one.pdoNumber);
}

void EntryMaker::fragment(unsigned int start, unsigned int end) {
  for (auto i = itemAt(m_layout, start); i < m_layout.items.size() && item(i).start < end; ++i) {
    const auto& one = item(i);
    if (one.start >= start && one.end() <= end) {
      keep(i);
      continue;
    }
    const auto from = std::max(start, one.start);
    const auto to = std::min(end, one.end());
    if (one.entry.gap()) {
      addGap(from, to, one.pdoNumber, true);
      continue;
    }
    auto entry = entryOf(one, one.name + partText(one, from - one.start, to - from), from, to - from);
    entry.pieces = piecesOf(m_layout, from, to);
    add(std::move(entry), one.pdoNumber);
  }
}

void EntryMaker::cut(std::size_t i) {
  const auto& one = item(i);
  const auto nature = m_types.natureOf(one.entry.type);
  const bool elements =
      !libraryType(nature.kind, nature.elementBits).empty() && one.entry.bits % nature.elementBits == 0;
  const auto widths = widthsOf(nature, elements, one.entry.bits);
  const bool halves = !elements && widths.size() == 2;
  unsigned int done = 0;
  for (std::size_t part = 0; part < widths.size(); ++part) {
    const bool top = part + 1 == widths.size();
    const auto tail = halves ? std::string(top ? " high" : " low")
                             : "[" + std::to_string(part + (elements ? nature.lowerBound : 0)) + "]";
    auto entry = entryOf(one, one.name + tail, one.start + done, widths[part]);
    // The sign of an odd width is in its upper part; two UDINT are what everybody expects of 64 bits.
    const bool withSign = nature.kind == Nature::SIGNED && top && one.entry.bits != 64;
    entry.type = libraryType(elements || withSign ? nature.kind : Nature::UNSIGNED, widths[part]);
    entry.pieces = {{i, done, 0, widths[part]}};
    done += widths[part];
    add(std::move(entry), one.pdoNumber);
  }
}

void EntryMaker::join(unsigned int start, unsigned int end) {
  for (unsigned int bit = start; bit < end;) {
    const auto bits = widthFor(end - bit);
    auto pieces = piecesOf(m_layout, bit, bit + bits);
    const auto home = item(itemAt(m_layout, bit)).pdoNumber;
    if (pieces.empty()) {
      addGap(bit, std::min(bit + bits, m_layout.bits()), home, true);
    } else {
      auto entry = entryOf(item(pieces[0].item), "", bit, bits);
      entry.type = libraryType(Nature::UNSIGNED, bits);
      entry.pieces = std::move(pieces);
      nameJoined(m_layout, entry);
      add(std::move(entry), home);
    }
    bit += bits;
  }
}

} // namespace igh_bus::adapt
