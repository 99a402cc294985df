// The entries of one sync manager as they are written, made of the slave's items one after another.
#ifndef IGH_BUS_ADAPT_ENTRYMAKER_H
#define IGH_BUS_ADAPT_ENTRYMAKER_H

#include "adapt/Target.h"
#include "adapt/Types.h"

namespace igh_bus::adapt {

class EntryMaker {
public:
  // All of them outlive it; `target` gets the PDOs of the layout.
  EntryMaker(const SmLayout& layout, const TypeTable& types, TargetSm& target);

  // An item as it is, but for its type, where that is only another word.
  void keep(std::size_t i);
  // One wide item in pieces: the elements of an array, else halves or parts, the lowest first.
  void cut(std::size_t i);
  // The bits from one byte's begin to another's in entries as wide as possible.
  void join(unsigned int start, unsigned int end);
  // Bits that share a byte with somebody else.
  void fragment(unsigned int start, unsigned int end);

private:
  const Item& item(std::size_t i) const { return m_layout.items[i]; }
  void add(TargetEntry entry, std::size_t pdoNumber);
  void addGap(unsigned int start, unsigned int end, std::size_t pdoNumber, bool free);

  const SmLayout& m_layout;
  const TypeTable& m_types;
  TargetSm& m_target;
};

} // namespace igh_bus::adapt

#endif
