#include "adapt/Bits.h"

#include "adapt/EntryMaker.h"
#include "adapt/Pieces.h"
#include "adapt/Windows.h"

#include <algorithm>
#include <set>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int WIDEST = 32; // bits of a joined entry

// Items that begin and end with a byte, and none of them does both unless it is alone.
struct Atom {
  std::size_t first;
  std::size_t last; // one past
  unsigned int start;
  unsigned int end;
};

class Fitter {
public:
  Fitter(const SmLayout& layout, const TypeTable& types, TargetSm& target)
      : m_layout(layout), m_types(types), m_maker(layout, types, target) {}

  void run() {
    const auto& items = m_layout.items;
    for (std::size_t first = 0; first < items.size();) {
      std::size_t last = first + 1;
      while (last < items.size() && !barrier(items[last - 1], items[last]))
        ++last;
      items[first].free ? fitFree(first, last) : keepAll(first, last);
      first = last;
    }
  }

private:
  bool barrier(const Item& one, const Item& next) const {
    return one.free != next.free || ((m_layout.assigned || !one.free) && one.pdoNumber != next.pdoNumber);
  }
  const Item& item(std::size_t i) const { return m_layout.items[i]; }
  void keepAll(std::size_t first, std::size_t last) {
    for (; first < last; ++first)
      m_maker.keep(first);
  }
  void fitFree(std::size_t first, std::size_t last);
  bool staysAsItIs(const Item& item) const;
  bool convertible(const Item& item) const;
  std::size_t atomFrom(std::size_t first, std::size_t last, Atom& atom) const;
  void fitUneven(std::size_t first, std::size_t last);
  bool mergeable(const Atom& one, const Atom& next) const;
  unsigned int reach(std::size_t first, std::size_t& last) const;
  bool isOneWideItem(const Atom& atom) const;
  void flush();

  const SmLayout& m_layout;
  const TypeTable& m_types;
  EntryMaker m_maker;
  std::vector<Atom> m_atoms; // neighbours that wait for being joined
};

bool Fitter::convertible(const Item& one) const {
  const auto nature = m_types.natureOf(one.entry.type);
  const bool array = nature.elementBits != 0 && nature.elementBits < one.entry.bits;
  return !one.entry.gap() && !array && !libraryType(nature.kind, one.entry.bits).empty();
}

bool Fitter::staysAsItIs(const Item& one) const {
  const bool wholeBytes = one.start % BITS_PER_BYTE == 0 && one.entry.bits % BITS_PER_BYTE == 0;
  return one.entry.bits == 0 || (wholeBytes && (one.entry.gap() || convertible(one)));
}

// One past the items from `first` on that fill whole bytes together; `first` when they never do. Behind the
// last item of a sync manager its last byte is filled up.
std::size_t Fitter::atomFrom(std::size_t first, std::size_t last, Atom& atom) const {
  for (std::size_t i = first; i < last; ++i) {
    const bool endsHere = i + 1 == m_layout.items.size();
    if (item(i).end() % BITS_PER_BYTE == 0 || endsHere) {
      atom = {first, i + 1, item(first).start, bytesUp(item(i).end())};
      return i + 1;
    }
  }
  return first;
}

void Fitter::fitFree(std::size_t first, std::size_t last) {
  while (first < last) {
    const auto& one = item(first);
    if (staysAsItIs(one)) {
      flush();
      m_maker.keep(first++);
      continue;
    }
    Atom atom{};
    const auto next = one.start % BITS_PER_BYTE == 0 ? atomFrom(first, last, atom) : first;
    if (next != first) {
      m_atoms.push_back(atom);
      first = next;
      continue;
    }
    flush();
    std::size_t end = first + 1; // up to where whole bytes end again
    while (end < last && item(end - 1).end() % BITS_PER_BYTE != 0)
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
  const auto firstByte = bytesUp(start);
  const auto behind = last == m_layout.items.size() ? bytesUp(end) : end / BITS_PER_BYTE * BITS_PER_BYTE;
  if (behind <= firstByte) {
    keepAll(first, last);
    return;
  }
  m_maker.fragment(start, firstByte);
  m_maker.join(firstByte, behind);
  m_maker.fragment(behind, end);
}

// Bits of one object, or bits of which each is an object of its own.
bool Fitter::mergeable(const Atom& one, const Atom& next) const {
  std::set<std::uint16_t> indices[2];
  const Atom* const atoms[] = {&one, &next};
  for (const int side : {0, 1}) {
    for (auto i = atoms[side]->first; i < atoms[side]->last; ++i) {
      if (item(i).entry.bits >= BITS_PER_BYTE)
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

bool Fitter::isOneWideItem(const Atom& atom) const {
  const auto& one = item(atom.first);
  return atom.last == atom.first + 1 && one.entry.bits >= BITS_PER_BYTE && !one.entry.gap() &&
         one.end() == atom.end;
}

void Fitter::flush() {
  for (std::size_t i = 0; i < m_atoms.size();) {
    const auto& atom = m_atoms[i];
    std::size_t last = i + 1;
    if (isOneWideItem(atom))
      m_maker.cut(atom.first);
    else
      m_maker.join(atom.start, atom.start + reach(i, last));
    i = last;
  }
  m_atoms.clear();
}

} // namespace

TargetSm fit(const SmLayout& layout, const TypeTable& types) {
  TargetSm target;
  Fitter(layout, types, target).run();
  openWindows(layout, target);
  return target;
}

} // namespace igh_bus::adapt
