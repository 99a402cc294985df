// What is shown of a run while it lasts: taken down in the cycle, read by another thread.
#ifndef IGH_BUS_LIVE_VALUES_H
#define IGH_BUS_LIVE_VALUES_H

#include "bus/Session.h"
#include "host/RealTime.h"
#include "run/Handover.h"

#include <array>

namespace igh_bus {

struct LivePicture {
  std::uint64_t cycles = 0;
  std::uint32_t states = 0; // of all slaves, ORed
  std::uint64_t leftOut = 0;
  double latencyUs = 0; // the worst wake-up of the last second, and of the run
  double worstUs = 0;
  std::array<std::uint64_t, 6> errors{}; // by code
  std::vector<std::uint64_t> slaveErrors;
  std::vector<double> values; // of the watched entries
};

class LiveValues {
public:
  LiveValues(const RunOptions& options, std::size_t slaves);

  // In the cycle; ten times a second a picture is made of what was seen.
  void note(std::uint32_t states, const Session& session, const Pacemaker& pacemaker);

  // Beside it: the latest picture.
  LivePicture picture() const;

private:
  void handOver(std::uint32_t states, const Session& session, const Pacemaker& pacemaker);

  std::uint64_t m_cyclesPerPicture;
  std::size_t m_slaves;
  std::size_t m_watches;
  std::array<std::int64_t, 10> m_tenths{}; // the worst wake-up of each
  std::size_t m_tenth = 0;
  Handover m_row;
};

} // namespace igh_bus

#endif
