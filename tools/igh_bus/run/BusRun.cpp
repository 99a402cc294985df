#include "run/BusRun.h"

#include "run/ReferenceClock.h"
#include "run/Results.h"
#include "text/Text.h"

#include <cstdio>
#include <optional>
#include <unistd.h>

namespace igh_bus {
namespace {

Pacemaker afterLocking(RealTime& realTime, std::uint32_t periodNs) {
  realTime.lockAllMemory();
  return Pacemaker(periodNs);
}

} // namespace

BusRun::BusRun(const RunOptions& options, RealTime& realTime)
    : m_options(options), m_session(options), m_recording(std::make_unique<Recording>(options.periodNs)),
      m_pacemaker(afterLocking(realTime, options.periodNs)) {}

void BusRun::cycle() {
  const bool terminal = isatty(STDOUT_FILENO) != 0 && !m_options.followReference;
  const std::uint64_t secondsBetweenLines = terminal ? 1 : 10;
  std::optional<ReferenceFollower> follower;
  if (m_options.followReference)
    follower.emplace(m_options.periodNs);
  const std::uint64_t cyclesPerLine =
      (secondsBetweenLines * 1000000000 + m_options.periodNs - 1) / m_options.periodNs;
  while (m_session.cycles() < m_options.cycles && m_pacemaker.wait()) {
    const auto cycle = m_session.cycles();
    m_climb.note(cycle, m_session.exchange());
    m_recording->note(m_pacemaker.latencyNs(), m_session.record(COMM_DIAG_LAST));
    m_recording->noteErrors(cycle, m_session.errors().total);
    if (follower)
      follower->step(m_session, m_climb.state(), m_pacemaker, *m_recording);
    if (!follower && m_session.cycles() % cyclesPerLine == 0)
      printProgress(m_options, m_session, m_climb.state(), terminal);
  }
  if (terminal)
    std::printf("\r\033[K");
}

Verdict BusRun::verdict(bool processData) const {
  constexpr std::uint32_t OP = 8;
  return judge({m_climb.state(), m_climb.seen(OP), StopSignals::requested(), processData, m_session.errors(),
                static_cast<double>(m_pacemaker.latestNs()), m_pacemaker.leftOut()},
               m_options.limits);
}

void sayRealTime(const Limits& limits, const RealTime& realTime) {
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
