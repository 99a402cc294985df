// Entries that the library converts, made of those that the slave has, bit by bit in the same place.
#ifndef IGH_BUS_ADAPT_BITS_H
#define IGH_BUS_ADAPT_BITS_H

#include "adapt/Target.h"
#include "adapt/Types.h"

namespace igh_bus::adapt {

// Neighbouring bits in whole bytes become one entry, what is too wide becomes several, where nobody else
// writes the entries. Names and objects may still be repeated.
TargetSm fit(const SmLayout& layout, const TypeTable& types);

} // namespace igh_bus::adapt

#endif
