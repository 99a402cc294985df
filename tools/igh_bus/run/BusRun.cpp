#include "run/BusRun.h"

#include "run/ReferenceClock.h"
#include "text/Text.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

namespace igh_bus {
namespace {

Pacemaker afterLocking(RealTime& realTime, std::uint32_t periodNs) {
  realTime.lockAllMemory();
  return Pacemaker(periodNs);
}

} // namespace

BusRun::BusRun(const RunOptions& options, RealTime& realTime, Lookout* lookout)
    : m_options(options), m_lookout(lookout), m_watches(options), m_session(options),
      m_recording(std::make_unique<Recording>(options.periodNs)),
      m_pacemaker(afterLocking(realTime, options.periodNs)) {}

void BusRun::cycle() {
  std::fflush(stdout); // the lookout writes past its buffer
  std::optional<ReferenceFollower> follower;
  if (m_options.followReference)
    follower.emplace();
  while (m_session.cycles() < m_options.cycles && m_pacemaker.wait()) {
    const auto cycle = m_session.cycles();
    m_climb.note(cycle, m_session.exchange());
    m_recording->note(m_pacemaker.latencyNs(), m_session.record(COMM_DIAG_LAST));
    m_recording->noteErrors(cycle, m_session.errors().total);
    m_watches.note(cycle, m_climb.state(), m_session, m_pacemaker);
    if (follower)
      follower->step(m_session, m_climb.state(), m_pacemaker, *m_recording, m_lookout);
    if (m_lookout)
      m_lookout->note(m_session, m_climb.state());
  }
  m_session.closeBooks();
  if (m_lookout)
    cycleOnForLookout();
}

// On a real master nothing is served to who looks while nobody cycles; so within bounds. Behind them the look
// is as far as it is, but for a turn of the lookout that has not come yet: its end is waited for anyway.
void BusRun::cycleOnForLookout() {
  using namespace std::chrono_literals;
  constexpr std::uint64_t LONGEST_NS = 5000000000;
  Pacemaker pacemaker = m_pacemaker;
  m_lookout->askForLast();
  for (auto left = LONGEST_NS / m_options.periodNs; left > 0 && !m_lookout->lastDone(); --left) {
    pacemaker.keepPace();
    m_session.exchangeUncounted();
  }
  for (int left = 200; left > 0 && !m_lookout->lastDone(); left -= m_lookout->isLooking() ? 1 : 0)
    std::this_thread::sleep_for(10ms);
}

Verdict BusRun::verdict(bool processData) const {
  constexpr std::uint32_t OP = 8;
  return judge({m_climb.state(), m_climb.seen(OP), StopSignals::requested(), StopSignals::byKey(),
                processData, m_session.errors(), m_lookout ? m_lookout->troubles() : "",
                static_cast<double>(m_pacemaker.latestNs()), m_pacemaker.leftOut()},
               m_options.limits);
}

void sayRealTime(const Limits& limits, const RealTime& realTime) {
  if (!realTime.hint().empty())
    std::printf("Hint: %s\n", realTime.hint().c_str());
  if (realTime.missing().empty())
    return;
  if (limits.strict)
    throw Failure(busError, "--strict: this would be no real-time run: " + realTime.missing());
  std::printf("Not a real-time run: %s\n", realTime.missing().c_str());
}

Status endRun(const Verdict& verdict, const RealTime& realTime) {
  if (verdict.success)
    std::printf("\nVerdict: %s\n", verdict.text.c_str());
  if (!realTime.missing().empty())
    std::printf("%sNot a real-time run: %s\n", verdict.success ? "" : "\n", realTime.missing().c_str());
  if (!verdict.success)
    throw Failure(busError, verdict.text);
  return success;
}

} // namespace igh_bus
