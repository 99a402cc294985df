// Lists of processors, as the kernel writes and reads them: "0-3,6".
#ifndef IGH_BUS_PROCESSOR_LIST_H
#define IGH_BUS_PROCESSOR_LIST_H

#include <optional>
#include <set>
#include <string>

namespace igh_bus {

using ProcessorList = std::set<unsigned int>;

// "all" and "N" count up to `last`, as on the kernel's command line. Nothing when it is no such list.
std::optional<ProcessorList> parseProcessors(const std::string& text, unsigned int last);

std::string processorsText(const ProcessorList& list); // "none" when empty

// Those of `wanted` that are not in `list`.
ProcessorList without(const ProcessorList& wanted, const ProcessorList& list);

} // namespace igh_bus

#endif
