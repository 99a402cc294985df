// The slaves on the bus as requests: a description for each, and what the slave itself tells of its modules.
#ifndef IGH_BUS_ADAPT_SLAVES_H
#define IGH_BUS_ADAPT_SLAVES_H

#include "adapt/Adaptation.h"
#include "bus/Survey.h"

namespace igh_bus::adapt {

// Slaves of one kind share a request, as they share a description in the library. Throws Failure(usageError)
// for slaves without any description, and for slaves of one kind that shall differ.
std::vector<Request> requestSlaves(const Sources& sources, const std::vector<FoundSlave>& slaves,
                                   RevisionRule rule, const std::map<unsigned int, Wishes>& wishes);

// The idents that the slave has in its slots, found (0xF050) or else configured (0xF030), by slot from 1;
// empty when it tells none. Works beside a running application.
std::map<unsigned int, std::uint32_t> readModules(const ScanOptions& options, unsigned int slave);

} // namespace igh_bus::adapt

#endif
