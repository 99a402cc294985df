// A run that follows the reference clock: keeps its wake-ups on the bus time and shows how the two meet.
#ifndef IGH_BUS_REFERENCE_CLOCK_H
#define IGH_BUS_REFERENCE_CLOCK_H

#include "RealTime.h"
#include "Session.h"

namespace igh_bus {

class ReferenceFollower {
public:
  explicit ReferenceFollower(std::uint32_t periodNs);
  // After each exchange. Prints a line about once per second, between those that the library prints of the
  // difference.
  void step(const Session& session, std::uint32_t state, Pacemaker& pacemaker);

private:
  void print(const Session& session, std::uint32_t state);

  std::uint32_t m_periodNs;
  std::uint64_t m_cyclesPerLine;
  std::int64_t m_offsetNs = 0;
  std::int64_t m_printedOffsetNs = 0;
};

} // namespace igh_bus

#endif
