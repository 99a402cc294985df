#include "run/Progress.h"

#include "text/Text.h"

#include <algorithm>
#include <cinttypes>
#include <unistd.h>

namespace igh_bus {
namespace {

constexpr std::uint64_t NS_PER_SECOND = 1000000000;

// Of a row: these, then the watched values, or those of the clock.
enum Place : std::size_t { cycles, states, errors, firstValue };
constexpr std::size_t CLOCK_VALUES = 4;

} // namespace

Progress::Progress(const RunOptions& options)
    : m_options(options), m_values(options.watchAll ? 0 : options.watches.size()),
      m_over(isatty(STDOUT_FILENO) != 0 && !options.followReference),
      m_cyclesPerLine(((m_over ? 1 : 10) * NS_PER_SECOND + options.periodNs - 1) / options.periodNs),
      m_row(firstValue + std::max(m_values, CLOCK_VALUES)) {}

void Progress::note(const Session& session, std::uint32_t alStates) {
  if (m_options.followReference || session.cycles() % m_cyclesPerLine != 0)
    return;
  m_row.begin();
  m_row.put(cycles, session.cycles());
  m_row.put(states, std::uint64_t{alStates});
  m_row.put(errors, session.errors().sum());
  for (std::size_t i = 0; i < m_values; ++i)
    m_row.put(firstValue + i, session.watched(i));
  m_row.end();
}

void Progress::noteClock(const ClockPoint& point, std::uint32_t alStates) {
  m_row.begin();
  m_row.put(cycles, point.cycle);
  m_row.put(states, std::uint64_t{alStates});
  m_row.put(firstValue, point.differenceNs);
  m_row.put(firstValue + 1, point.minimumNs);
  m_row.put(firstValue + 2, point.maximumNs);
  m_row.put(firstValue + 3, point.offsetNs);
  m_row.end();
}

std::optional<std::string> Progress::line() {
  const auto row = m_row.read(m_read);
  if (row == m_told)
    return {};
  m_told = row;
  return m_options.followReference ? clockLine() : runLine();
}

std::string Progress::runLine() const {
  auto text =
      format("cycle %" PRIu64 " of %" PRIu64 "  %s  errors %" PRIu64, m_read[cycles], m_options.cycles,
             stateText(static_cast<std::uint32_t>(m_read[states])).c_str(), m_read[errors]);
  for (std::size_t i = 0; i < m_values; ++i)
    text += format("  %u:%s=%.10g", m_options.watches[i].slave, m_options.watches[i].entry.c_str(),
                   Handover::as<double>(m_read[firstValue + i]));
  return text;
}

std::string Progress::clockLine() {
  const auto value = [&](std::size_t place) {
    return Handover::as<std::int64_t>(m_read[firstValue + place]);
  };
  const ClockPoint point{m_read[cycles], value(0), value(1), value(2), value(3)};
  const double elapsedNs = static_cast<double>(point.cycle - m_before.cycle) * m_options.periodNs;
  const auto moved = static_cast<double>(point.offsetNs - m_before.offsetNs);
  m_before = point;
  return format("cycle %" PRIu64 "  %s  clock difference %" PRId64 " ns (%" PRId64 " to %" PRId64
                "), offset %" PRId64 " ns, moving by %.3f ppm",
                point.cycle, stateText(static_cast<std::uint32_t>(m_read[states])).c_str(),
                point.differenceNs, point.minimumNs, point.maximumNs, point.offsetNs,
                moved / elapsedNs * 1e6);
}

} // namespace igh_bus
