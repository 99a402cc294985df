#include "adapt/Bits.h"

#include "adapt/Names.h"
#include "text/Text.h"

#include <algorithm>
#include <set>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int BYTE = 8;
constexpr unsigned int WIDEST = 32;   // bits of a joined entry
constexpr unsigned int MOST = 255;    // bits of any entry: lengths have eight bits
constexpr unsigned int LONGEST = 248; // of these in whole bytes

// Items that begin and end with a byte, and none of them does both unless it is alone.
struct Atom {
  std::size_t first;
  std::size_t last; // one past
  unsigned int start;
  unsigned int end;
};

unsigned int widthFor(unsigned int bits) {
  return bits >= 32 ? 32 : bits >= 16 ? 16 : BYTE;
}

std::string partText(const Item& item, unsigned int from, unsigned int count) {
  if (from == 0)
    return " low";
  return from + count == item.entry.bits ? " high" : format(" [bits %u..%u]", from, from + count - 1);
}

class Fitter {
public:
  Fitter(const SmLayout& layout, const TypeTable& types) : m_layout(layout), m_types(types) {}

  TargetSm run() {
    m_target.index = m_layout.index;
    m_target.output = m_layout.output;
    for (const auto& pdo : m_layout.pdos)
      m_target.pdos.push_back({pdo.index, pdo.name, pdo.fixed, {}});
    if (m_layout.shelter != 0) {
      m_target.pdos[0].index = m_layout.shelter;
      m_target.pdos[0].fixed = true;
    }
    const auto& items = m_layout.items;
    for (std::size_t first = 0; first < items.size();) {
      std::size_t last = first + 1;
      while (last < items.size() && !barrier(items[last - 1], items[last]))
        ++last;
      items[first].free ? fitFree(first, last) : keepAll(first, last);
      first = last;
    }
    openWindows();
    return std::move(m_target);
  }

private:
  bool barrier(const Item& one, const Item& next) const {
    return one.free != next.free || ((m_layout.assigned || !one.free) && one.pdoNumber != next.pdoNumber);
  }
  const Item& item(std::size_t i) const { return m_layout.items[i]; }

  void keepAll(std::size_t first, std::size_t last) {
    for (; first < last; ++first)
      keep(first);
  }
  void fitFree(std::size_t first, std::size_t last);
  std::size_t atomFrom(std::size_t first, std::size_t last, Atom& atom) const;
  bool convertible(const Item& item) const;
  void keep(std::size_t i);
  void addGap(unsigned int start, unsigned int end, std::size_t pdoNumber, bool free);
  void flush();
  bool mergeable(const Atom& one, const Atom& next) const;
  unsigned int reach(std::size_t first, std::size_t& last) const;
  void cutItem(std::size_t i);
  void join(unsigned int start, unsigned int end);
  void fitUneven(std::size_t first, std::size_t last);
  void fragment(unsigned int start, unsigned int end);
  std::size_t itemAt(unsigned int bit) const;
  std::vector<Piece> piecesOf(unsigned int start, unsigned int stop) const;
  void nameJoined(TargetEntry& entry) const;
  void openWindows();
  void openWindow(TargetEntry& entry, unsigned int end) const;
  void add(TargetEntry entry, std::size_t pdoNumber) {
    // Where the library would put PDOs in another order, one PDO holds them all.
    m_target.pdos[m_layout.ascending ? pdoNumber : 0].entries.push_back(std::move(entry));
  }

  const SmLayout& m_layout;
  const TypeTable& m_types;
  TargetSm m_target;
  std::vector<Atom> m_atoms; // neighbours that wait for being joined
};

bool Fitter::convertible(const Item& one) const {
  const auto nature = m_types.natureOf(one.entry.type);
  const bool array = nature.elementBits != 0 && nature.elementBits < one.entry.bits;
  return !one.entry.gap() && !array && !libraryType(nature.kind, one.entry.bits).empty();
}

void Fitter::addGap(unsigned int start, unsigned int end, std::size_t pdoNumber, bool free) {
  for (; start < end; start += LONGEST) {
    TargetEntry gap;
    gap.start = start;
    gap.bits = std::min(end - start, LONGEST);
    gap.free = free;
    add(std::move(gap), pdoNumber);
  }
}

// As it is, but for its type, where that is only another word.
void Fitter::keep(std::size_t i) {
  const auto& one = item(i);
  if (one.entry.gap()) {
    addGap(one.start, one.end(), one.pdoNumber, one.free);
    return;
  }
  if (one.entry.bits > MOST) {
    cutItem(i);
    return;
  }
  TargetEntry entry;
  entry.name = one.name;
  entry.index = one.entry.index;
  entry.subindex = one.entry.subindex;
  entry.bits = one.entry.bits;
  entry.start = one.start;
  entry.free = one.free;
  entry.whole = true;
  entry.pieces = {{i, 0, 0, one.entry.bits}};
  const auto type = libraryType(m_types.natureOf(one.entry.type).kind, one.entry.bits);
  entry.type = !type.empty() ? type : one.entry.bits != 0 ? one.entry.type : "";
  add(std::move(entry), one.pdoNumber);
}

// One past the items from `first` on that fill whole bytes together; `first` when they never do. Behind the
// last item of a sync manager its last byte is filled up.
std::size_t Fitter::atomFrom(std::size_t first, std::size_t last, Atom& atom) const {
  for (std::size_t i = first; i < last; ++i) {
    const bool endsHere = i + 1 == m_layout.items.size();
    if (item(i).end() % BYTE == 0 || endsHere) {
      atom = {first, i + 1, item(first).start, (item(i).end() + BYTE - 1) / BYTE * BYTE};
      return i + 1;
    }
  }
  return first;
}

void Fitter::fitFree(std::size_t first, std::size_t last) {
  while (first < last) {
    const auto& one = item(first);
    Atom atom{};
    const bool aligned = one.start % BYTE == 0 && one.entry.bits != 0;
    if (one.entry.bits == 0 ||
        (aligned && one.entry.bits % BYTE == 0 && (one.entry.gap() || convertible(one)))) {
      flush();
      keep(first++);
      continue;
    }
    const auto next = aligned ? atomFrom(first, last, atom) : first;
    if (next != first) {
      m_atoms.push_back(atom);
      first = next;
      continue;
    }
    flush();
    std::size_t end = first + 1; // up to where whole bytes end again
    while (end < last && item(end - 1).end() % BYTE != 0)
      ++end;
    fitUneven(first, end);
    first = end;
  }
  flush();
}

// Items that do not fill whole bytes: those between the first byte's begin and the last one's end are joined,
// and what is left on both sides shares a byte with somebody else.
void Fitter::fitUneven(std::size_t first, std::size_t last) {
  const auto start = item(first).start;
  const auto end = item(last - 1).end();
  const auto firstByte = (start + BYTE - 1) / BYTE * BYTE;
  const auto behind = last == m_layout.items.size() ? (end + BYTE - 1) / BYTE * BYTE : end / BYTE * BYTE;
  if (behind <= firstByte) {
    keepAll(first, last);
    return;
  }
  fragment(start, firstByte);
  join(firstByte, behind);
  fragment(behind, end);
}

void Fitter::fragment(unsigned int start, unsigned int end) {
  for (auto i = itemAt(start); i < m_layout.items.size() && item(i).start < end; ++i) {
    const auto& one = item(i);
    if (one.start >= start && one.end() <= end) {
      keep(i);
      continue;
    }
    TargetEntry entry;
    entry.start = std::max(start, one.start);
    entry.bits = std::min(end, one.end()) - entry.start;
    if (one.entry.gap()) {
      addGap(entry.start, entry.start + entry.bits, one.pdoNumber, true);
      continue;
    }
    entry.name = one.name + partText(one, entry.start - one.start, entry.bits);
    entry.index = one.entry.index;
    entry.subindex = one.entry.subindex;
    entry.pieces = piecesOf(entry.start, entry.start + entry.bits);
    add(std::move(entry), one.pdoNumber);
  }
}

// The first item that ends behind this bit.
std::size_t Fitter::itemAt(unsigned int bit) const {
  const auto& items = m_layout.items;
  const auto found =
      std::partition_point(items.begin(), items.end(), [&](const Item& one) { return one.end() <= bit; });
  return static_cast<std::size_t>(found - items.begin());
}

// Gaps left out; bits are counted from `start`.
std::vector<Piece> Fitter::piecesOf(unsigned int start, unsigned int stop) const {
  std::vector<Piece> pieces;
  for (auto i = itemAt(start); i < m_layout.items.size() && item(i).start < stop; ++i) {
    const auto from = std::max(start, item(i).start);
    const auto to = std::min(stop, item(i).end());
    if (from < to && !item(i).entry.gap())
      pieces.push_back({i, from - item(i).start, from - start, to - from});
  }
  return pieces;
}

// Bits of one object, or bits of which each is an object of its own.
bool Fitter::mergeable(const Atom& one, const Atom& next) const {
  std::set<std::uint16_t> indices[2];
  const Atom* const atoms[] = {&one, &next};
  for (const int side : {0, 1}) {
    for (auto i = atoms[side]->first; i < atoms[side]->last; ++i) {
      if (item(i).entry.bits >= BYTE)
        return false;
      if (!item(i).entry.gap())
        indices[side].insert(item(i).entry.index);
    }
  }
  return indices[0].size() == 1 || indices[1].size() == 1 ? indices[0] == indices[1] : true;
}

// How many bits from this atom on make one entry; `last` is then one past its atoms. The widest possible.
unsigned int Fitter::reach(std::size_t first, std::size_t& last) const {
  unsigned int best = m_atoms[first].end - m_atoms[first].start;
  last = first + 1;
  for (auto i = first + 1; i < m_atoms.size() && mergeable(m_atoms[i - 1], m_atoms[i]); ++i) {
    const unsigned int bits = m_atoms[i].end - m_atoms[first].start;
    if (bits > WIDEST)
      break;
    if (bits == 16 || bits == WIDEST) {
      best = bits;
      last = i + 1;
    }
  }
  return best;
}

void Fitter::flush() {
  for (std::size_t i = 0; i < m_atoms.size();) {
    const auto& atom = m_atoms[i];
    std::size_t last = i + 1;
    if (atom.last == atom.first + 1 && item(atom.first).entry.bits >= BYTE && !item(atom.first).entry.gap() &&
        item(atom.first).end() == atom.end) {
      cutItem(atom.first);
    } else {
      const auto bits = reach(i, last);
      join(atom.start, atom.start + bits);
    }
    i = last;
  }
  m_atoms.clear();
}

// One wide item in pieces: the elements of an array, else halves or parts, the lowest first.
void Fitter::cutItem(std::size_t i) {
  const auto& one = item(i);
  const auto nature = m_types.natureOf(one.entry.type);
  const bool elements =
      !libraryType(nature.kind, nature.elementBits).empty() && one.entry.bits % nature.elementBits == 0;
  std::vector<unsigned int> widths;
  for (unsigned int done = 0; done < one.entry.bits; done += widths.back())
    widths.push_back(elements ? nature.elementBits
                              : std::min(widthFor(one.entry.bits - done), one.entry.bits - done));
  const bool halves = !elements && widths.size() == 2;
  unsigned int done = 0;
  for (std::size_t part = 0; part < widths.size(); ++part) {
    const bool top = part + 1 == widths.size();
    TargetEntry entry;
    // The sign of an odd width is in its upper part; two UDINT are what everybody expects of 64 bits.
    const bool withSign = nature.kind == Nature::SIGNED && top && one.entry.bits != 64;
    entry.type = libraryType(elements || withSign ? nature.kind : Nature::UNSIGNED, widths[part]);
    entry.name = one.name + (halves ? std::string(top ? " high" : " low")
                                    : "[" + std::to_string(part + (elements ? nature.lowerBound : 0)) + "]");
    entry.index = one.entry.index;
    entry.subindex = one.entry.subindex;
    entry.bits = widths[part];
    entry.start = one.start + done;
    entry.pieces = {{i, done, 0, widths[part]}};
    done += widths[part];
    add(std::move(entry), one.pdoNumber);
  }
}

// The items in entries as wide as possible.
void Fitter::join(unsigned int start, unsigned int end) {
  for (unsigned int bit = start; bit < end;) {
    TargetEntry entry;
    entry.start = bit;
    entry.bits = widthFor(end - bit);
    entry.pieces = piecesOf(bit, bit + entry.bits);
    const auto home = item(itemAt(bit)).pdoNumber;
    bit += entry.bits;
    if (entry.pieces.empty()) {
      addGap(entry.start, std::min(bit, m_layout.bits()), home, true);
      continue;
    }
    const auto& one = item(entry.pieces[0].item);
    entry.type = libraryType(Nature::UNSIGNED, entry.bits);
    entry.index = one.entry.index;
    entry.subindex = one.entry.subindex;
    nameJoined(entry);
    add(std::move(entry), home);
  }
}

void Fitter::nameJoined(TargetEntry& entry) const {
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

bool converts(const TargetEntry& entry) {
  const auto is = [&](Nature::Kind kind) { return entry.type == libraryType(kind, entry.bits); };
  return !entry.type.empty() && entry.start % BYTE == 0 &&
         (is(Nature::UNSIGNED) || is(Nature::SIGNED) || is(Nature::REAL));
}

// Entries that must stay: the first in a byte is given a type that takes the rest of its bytes along, as long
// as nothing there has a value of its own.
void Fitter::openWindows() {
  std::vector<TargetEntry*> entries;
  unsigned int end = 0; // of what is moved at all: behind the last entry nothing is
  for (auto& pdo : m_target.pdos) {
    for (auto& entry : pdo.entries) {
      entries.push_back(&entry);
      end = entry.gap() ? end : (entry.start + entry.bits + BYTE - 1) / BYTE * BYTE;
    }
  }
  std::vector<unsigned int> ends(entries.size()); // where the next value of its own begins
  for (std::size_t i = entries.size(); i-- > 0;) {
    ends[i] = end;
    end = converts(*entries[i]) ? entries[i]->start : end;
  }
  unsigned int open = 0; // up to which bit a window reaches
  for (std::size_t i = 0; i < entries.size(); ++i) {
    auto& entry = *entries[i];
    if (entry.gap() || entry.bits == 0 || converts(entry) || entry.start % BYTE != 0 || entry.start < open)
      continue;
    openWindow(entry, ends[i]);
    open = entry.start + entry.window;
  }
}

// As narrow as it can be without cutting an entry, before `end`.
void Fitter::openWindow(TargetEntry& entry, unsigned int end) const {
  const auto cut = [&](unsigned int bit) {
    const auto i = itemAt(bit);
    return i < m_layout.items.size() && !item(i).entry.gap() && item(i).start < bit;
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
  entry.pieces = piecesOf(entry.start, entry.start + entry.window);
  nameJoined(entry);
}

} // namespace

TargetSm fit(const SmLayout& layout, const TypeTable& types) {
  return Fitter(layout, types).run();
}

} // namespace igh_bus::adapt
