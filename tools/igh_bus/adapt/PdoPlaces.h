// The sync managers of the PDOs that are taken.
#ifndef IGH_BUS_ADAPT_PDOPLACES_H
#define IGH_BUS_ADAPT_PDOPLACES_H

#include "adapt/TakenPdos.h"

namespace igh_bus::adapt {

// Nothing more is taken while it lives.
class PdoPlaces {
public:
  PdoPlaces(const SourceDevice& device, const std::vector<SourcePdo>& offered, const TakenPdos& taken);

  // That of other PDOs of the direction, else the one which is described so, else the usual one.
  unsigned int usual(bool output) const;
  // A sync manager has one direction: the library drops the PDOs of the other.
  void place(SourcePdo& pdo, Changes& changes) const;

private:
  std::optional<unsigned int> describedAs(bool output) const;

  const SourceDevice& m_device;
  const std::vector<SourcePdo>& m_offered;
  const TakenPdos& m_taken;
  std::map<unsigned int, unsigned int> m_directions; // of each sync manager: 1 output, 2 input
};

} // namespace igh_bus::adapt

#endif
