// Which description serves a slave.
#ifndef IGH_BUS_ADAPT_REVISIONCHOICE_H
#define IGH_BUS_ADAPT_REVISIONCHOICE_H

#include "adapt/Source.h"

namespace igh_bus::adapt {

enum class RevisionRule { EXACT, OLDER, ANY };

// The device of the key's vendor and product with its revision; else with the highest below it (OLDER), or
// the nearest, the lower of two as near (ANY). Of equal ones the first. Null for none.
const SourceDevice* chooseRevision(const std::vector<SourceDevice>& devices, const DeviceKey& key,
                                   RevisionRule rule);

// Revisions of the key's product that are described, ascending.
std::vector<std::uint32_t> describedRevisions(const std::vector<SourceDevice>& devices, const DeviceKey& key);

} // namespace igh_bus::adapt

#endif
