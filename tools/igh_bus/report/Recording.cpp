#include "report/Recording.h"

namespace igh_bus {

const char* Recording::name(Phase phase) {
  static constexpr std::array<const char*, phases> NAMES{"wake_up_latency", "receive", "sdo",
                                                         "callback",        "send",    "total"};
  return NAMES[phase];
}

const char* Recording::title(Phase phase) {
  static constexpr std::array<const char*, phases> TITLES{"Wake-up latency", "Receive", "SDO step",
                                                          "Callback",        "Send",    "Whole exchange"};
  return TITLES[phase];
}

Recording::Recording(std::int64_t periodNs)
    : m_histograms{Histogram(periodNs), Histogram(periodNs), Histogram(periodNs),
                   Histogram(periodNs), Histogram(periodNs), Histogram(periodNs)} {}

void Recording::note(std::int64_t wakeUpLatencyNs, const _ETHERCAT_COMM_DIAG_INFO& costs) {
  constexpr std::int64_t NS_PER_US = 1000;
  m_histograms[wakeUp].add(wakeUpLatencyNs);
  m_histograms[receive].add(costs.txPdoReceivedCostUs * NS_PER_US);
  m_histograms[sdo].add(costs.sdoCostUs * NS_PER_US);
  m_histograms[callback].add(costs.userCallbackCostUs * NS_PER_US);
  m_histograms[send].add(costs.rxPdoSentCostUs * NS_PER_US);
  m_histograms[total].add(costs.totalExchangeCostUs * NS_PER_US);
  m_course.note(wakeUpLatencyNs, Costs::of(costs));
}

void Recording::noteErrors(std::uint64_t cycle, const std::array<std::uint64_t, 6>& totals) {
  for (std::size_t code = 0; code < totals.size(); ++code) {
    if (totals[code] != m_totals[code])
      noteError(cycle, static_cast<int>(code), totals[code] - m_totals[code]);
  }
  m_totals = totals;
}

void Recording::noteError(std::uint64_t cycle, int code, std::uint64_t count) {
  const auto place = static_cast<std::size_t>(code);
  if (m_latest[place] != 0) {
    ErrorSpan& span = m_spans[m_latest[place] - 1];
    if (cycle <= span.last + 1) {
      span.last = cycle;
      span.count += count;
      return;
    }
  }
  if (m_spanCount == m_spans.size()) {
    m_lostErrors += count;
    return;
  }
  m_spans[m_spanCount++] = {cycle, cycle, count, code};
  m_latest[place] = m_spanCount;
}

// A full table gives up every second point, so that a run of any length keeps its whole course.
void Recording::noteClock(const ClockPoint& point) {
  if (m_clockSeen++ % m_clockStride != 0)
    return;
  if (m_clockCount == m_clock.size()) {
    for (std::size_t i = 0; i < m_clock.size() / 2; ++i)
      m_clock[i] = m_clock[2 * i];
    m_clockCount /= 2;
    m_clockStride *= 2;
  }
  m_clock[m_clockCount++] = point;
}

} // namespace igh_bus
