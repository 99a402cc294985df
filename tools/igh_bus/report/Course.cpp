#include "report/Course.h"

#include <algorithm>

namespace igh_bus {

std::size_t CoarseHistogram::classOf(std::int64_t ns) {
  if (ns < 1 << LOWEST_OCTAVE)
    return 0;
  const auto value = static_cast<std::uint64_t>(ns);
  const unsigned octave = 63U - static_cast<unsigned>(__builtin_clzll(value));
  if (octave >= LOWEST_OCTAVE + OCTAVES)
    return CLASSES - 1;
  const auto within = value >> (octave - PER_OCTAVE_BITS) & ((1U << PER_OCTAVE_BITS) - 1);
  return 1 + ((octave - LOWEST_OCTAVE) << PER_OCTAVE_BITS) + within;
}

std::int64_t CoarseHistogram::middleNs(std::size_t place, std::int64_t maximumNs) {
  if (place == 0)
    return 1 << (LOWEST_OCTAVE - 1);
  if (place == CLASSES - 1)
    return maximumNs;
  const auto octave = LOWEST_OCTAVE + ((place - 1) >> PER_OCTAVE_BITS);
  const auto within = (place - 1) & ((1U << PER_OCTAVE_BITS) - 1);
  const std::int64_t width = std::int64_t{1} << (octave - PER_OCTAVE_BITS);
  return (std::int64_t{1} << octave) + static_cast<std::int64_t>(within) * width + width / 2;
}

void CoarseHistogram::add(const CoarseHistogram& other) {
  for (std::size_t place = 0; place < CLASSES; ++place)
    m_counts[place] += other.m_counts[place];
}

std::int64_t CoarseHistogram::medianNs(std::uint64_t samples, std::int64_t minimumNs,
                                       std::int64_t maximumNs) const {
  std::uint64_t sum = 0;
  std::size_t place = 0;
  while (place < CLASSES - 1 && (sum += m_counts[place]) * 2 < samples)
    ++place;
  return std::clamp(middleNs(place, maximumNs), minimumNs, maximumNs);
}

Costs Costs::of(const _ETHERCAT_COMM_DIAG_INFO& record) {
  const auto whole = [](int cost) { return static_cast<std::uint64_t>(std::max(cost, 0)); };
  return {{whole(record.txPdoReceivedCostUs), whole(record.sdoCostUs), whole(record.userCallbackCostUs),
           whole(record.rxPdoSentCostUs), whole(record.totalExchangeCostUs)}};
}

void Costs::add(const Costs& other) {
  for (std::size_t part = 0; part < us.size(); ++part)
    us[part] += other.us[part];
}

void Interval::add(const Interval& next) {
  if (next.maximumNs > maximumNs) {
    maximumNs = next.maximumNs;
    maximumCycle = next.maximumCycle;
  }
  minimumNs = std::min(minimumNs, next.minimumNs);
  latencies.add(next.latencies);
  sums.add(next.sums);
  longestUs = std::max(longestUs, next.longestUs);
  cycles += next.cycles;
}

void Course::note(std::int64_t wakeUpLatencyNs, const Costs& costs) {
  const std::int64_t late = std::max<std::int64_t>(wakeUpLatencyNs, 0);
  if (m_used == 0 || m_intervals[m_used - 1].cycles == m_length) {
    if (m_used == MOST)
      halve();
    m_intervals[m_used] = {};
    m_intervals[m_used].first = m_cycle;
    m_intervals[m_used].minimumNs = late;
    m_intervals[m_used].maximumNs = late;
    m_intervals[m_used].maximumCycle = m_cycle;
    ++m_used;
  }
  Interval& interval = m_intervals[m_used - 1];
  ++interval.cycles;
  interval.minimumNs = std::min(interval.minimumNs, late);
  if (late > interval.maximumNs) {
    interval.maximumNs = late;
    interval.maximumCycle = m_cycle;
  }
  interval.latencies.add(late);
  interval.sums.add(costs);
  interval.longestUs = std::max(interval.longestUs, costs.us[Costs::total]);
  if (m_cycle == 0 || costs.us[Costs::total] > m_slowest.us[Costs::total]) {
    m_slowest = costs;
    m_slowestCycle = m_cycle;
  }
  ++m_cycle;
}

void Course::halve() {
  for (std::size_t i = 0; i < MOST / 2; ++i) {
    Interval both = m_intervals[2 * i];
    both.add(m_intervals[2 * i + 1]);
    m_intervals[i] = both;
  }
  m_used = MOST / 2;
  m_length *= 2;
}

} // namespace igh_bus
