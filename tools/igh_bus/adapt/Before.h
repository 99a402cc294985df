// The makers' files as the library reads them.
#ifndef IGH_BUS_ADAPT_BEFORE_H
#define IGH_BUS_ADAPT_BEFORE_H

#include "adapt/Source.h"

namespace igh_bus::adapt {

// Every device that the library loads from these files. What it does not look at (dictionaries, pictures) is
// left out first: reading that once more would take as long as reading the files did.
std::vector<Device> loadedBefore(const Sources& sources, bool withMarkup);

} // namespace igh_bus::adapt

#endif
