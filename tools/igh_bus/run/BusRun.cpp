#include "run/BusRun.h"

#include "run/ReferenceClock.h"
#include "run/Results.h"
#include "text/Text.h"

#include <cstdio>
#include <optional>
#include <unistd.h>

namespace igh_bus {
namespace {

Pacemaker inRealTime(const RunOptions& options) {
  becomeRealTime(options.priority, options.cpu);
  return Pacemaker(options.periodNs);
}

} // namespace

BusRun::BusRun(const RunOptions& options)
    : m_options(options), m_session(options), m_recording(std::make_unique<Recording>(options.periodNs)),
      m_pacemaker(inRealTime(options)) {}

void BusRun::cycle() {
  const bool terminal = isatty(STDOUT_FILENO) != 0 && !m_options.followReference;
  std::optional<ReferenceFollower> follower;
  if (m_options.followReference)
    follower.emplace(m_options.periodNs);
  const std::uint64_t cyclesPerSecond = (1000000000 + m_options.periodNs - 1) / m_options.periodNs;
  while (m_session.cycles() < m_options.cycles && m_pacemaker.wait()) {
    const auto cycle = m_session.cycles();
    m_climb.note(cycle, m_session.exchange());
    m_recording->note(m_pacemaker.latencyNs(), m_session.record(COMM_DIAG_LAST));
    m_recording->noteErrors(cycle, m_session.errors().total);
    if (follower)
      follower->step(m_session, m_climb.state(), m_pacemaker, *m_recording);
    if (terminal && m_session.cycles() % cyclesPerSecond == 0)
      printProgress(m_options, m_session, m_climb.state());
  }
  if (terminal)
    std::printf("\r\033[K");
}

std::string BusRun::verdict(bool processData) const {
  if (StopSignals::requested())
    return {};
  constexpr std::uint32_t OP = 8;
  constexpr std::uint64_t LASTING = 3; // single late frames happen on healthy buses
  if (!m_climb.seen(OP))
    return "the bus never reached OP; it ended in " + stateText(m_climb.state());
  if (m_climb.state() != OP)
    return "the bus left OP; it ended in " + stateText(m_climb.state());
  for (const int code :
       {ETHERCAT_ERROR_WORKING_COUNTER, ETHERCAT_ERROR_LINK_DOWN, ETHERCAT_ERROR_SLAVE_STATE}) {
    if (code == ETHERCAT_ERROR_WORKING_COUNTER && !processData)
      continue; // raised in every cycle of a bus without process data
    if (m_session.errors().lasting(code, LASTING))
      return std::string("at the end of the run: ") + errorText(code);
  }
  return {};
}

Status endRun(const std::string& verdict) {
  if (StopSignals::requested())
    std::printf("\nEnded by a signal.\n");
  if (!verdict.empty())
    throw Failure(busError, verdict);
  return success;
}

} // namespace igh_bus
