// What became of the entries, as changes.
#ifndef IGH_BUS_ADAPT_TELLING_H
#define IGH_BUS_ADAPT_TELLING_H

#include "adapt/Plan.h"
#include "adapt/Types.h"

namespace igh_bus::adapt {

void tellEntries(Plan& plan, const TypeTable& types);

// The bits of a piece in its entry.
std::uint32_t maskOf(const Piece& piece);

// "3 names, 1 type" ...: how often each kind occurs.
std::string countKinds(const Changes& changes);

} // namespace igh_bus::adapt

#endif
