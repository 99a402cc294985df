// Which of the PDOs that a description offers are exchanged.
#ifndef IGH_BUS_ADAPT_PDOCHOICE_H
#define IGH_BUS_ADAPT_PDOCHOICE_H

#include "adapt/Source.h"
#include "adapt/Wishes.h"

namespace igh_bus::adapt {

struct PdoChoice {
  std::vector<SourcePdo> pdos; // each with its sync manager, in the order of the description
  Changes changes;
  std::vector<std::string> open;
};

// `mode` may be null. Throws Failure(usageError) for wished PDOs that the device has not or that exclude each
// other.
PdoChoice choosePdos(const SourceDevice& device, std::vector<SourcePdo> offered, const SourceMode* mode,
                     const Wishes& wishes);

} // namespace igh_bus::adapt

#endif
