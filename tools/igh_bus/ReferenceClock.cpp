#include "ReferenceClock.h"

#include "Text.h"

#include <cinttypes>
#include <cstdio>

namespace igh_bus {

ReferenceFollower::ReferenceFollower(std::uint32_t periodNs)
    : m_periodNs(periodNs), m_cyclesPerLine((1000000000 + std::uint64_t{periodNs} - 1) / periodNs) {}

void ReferenceFollower::step(const Session& session, std::uint32_t state, Pacemaker& pacemaker) {
  // The master's time is the real time less the offset: what the offset gains, the wake-ups must wait.
  const auto offset = session.clockOffsetNs();
  pacemaker.shift(offset - m_offsetNs);
  m_offsetNs = offset;
  if (session.cycles() % m_cyclesPerLine == 0)
    print(session, state);
}

void ReferenceFollower::print(const Session& session, std::uint32_t state) {
  const double elapsedNs = static_cast<double>(m_cyclesPerLine) * m_periodNs;
  const auto moved = static_cast<double>(m_offsetNs - m_printedOffsetNs);
  std::printf("cycle %" PRIu64 "  %s  clock offset %" PRId64 " ns, moving by %.3f ppm\n", session.cycles(),
              stateText(state).c_str(), m_offsetNs, moved / elapsedNs * 1e6);
  std::fflush(stdout);
  m_printedOffsetNs = m_offsetNs;
}

} // namespace igh_bus
