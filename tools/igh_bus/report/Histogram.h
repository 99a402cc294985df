// Durations counted in classes of one microsecond. A fixed size, so that counting in the cycle never
// allocates.
#ifndef IGH_BUS_REPORT_HISTOGRAM_H
#define IGH_BUS_REPORT_HISTOGRAM_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace igh_bus {

class Histogram {
public:
  static constexpr std::size_t CLASSES = 10000; // 10 ms; what is longer has a count of its own

  // Durations longer than `limitNs` are counted besides.
  explicit Histogram(std::int64_t limitNs) : m_limitNs(limitNs) {}

  void add(std::int64_t ns) {
    ns = std::max<std::int64_t>(ns, 0);
    const auto place = static_cast<std::size_t>(ns / 1000);
    ++(place < CLASSES ? m_counts[place] : m_beyond);
    m_minimumNs = m_samples == 0 ? ns : std::min(m_minimumNs, ns);
    if (ns > m_maximumNs || m_samples == 0) {
      m_maximumNs = ns;
      m_maximumSample = m_samples;
    }
    m_sumNs += static_cast<double>(ns);
    m_beyondLimit += ns > m_limitNs ? 1 : 0;
    ++m_samples;
  }

  std::uint64_t samples() const { return m_samples; }
  std::uint64_t beyondLimit() const { return m_beyondLimit; }
  std::uint64_t beyond() const { return m_beyond; }
  std::uint64_t count(std::size_t microseconds) const { return m_counts[microseconds]; }
  double meanUs() const { return m_samples == 0 ? 0 : m_sumNs / static_cast<double>(m_samples) / 1e3; }
  double minimumUs() const { return static_cast<double>(m_minimumNs) / 1e3; }
  std::uint64_t maximumSample() const { return m_maximumSample; } // the first one that long, counted from 0
  double maximumUs() const { return static_cast<double>(m_maximumNs) / 1e3; }

  // The class in which the given share of the samples, from the shortest on, is complete; the maximum when
  // that lies beyond the classes. 0 without samples.
  double percentileUs(double share) const {
    const auto wanted = static_cast<double>(m_samples) * share;
    std::uint64_t sum = 0;
    for (std::size_t place = 0; place < CLASSES; ++place) {
      sum += m_counts[place];
      if (sum != 0 && static_cast<double>(sum) >= wanted)
        return static_cast<double>(place);
    }
    return maximumUs();
  }

  // One past the last class in use, at least 1.
  std::size_t usedClasses() const {
    std::size_t end = CLASSES;
    while (end > 1 && m_counts[end - 1] == 0)
      --end;
    return end;
  }

private:
  std::int64_t m_limitNs;
  std::int64_t m_minimumNs = 0;
  std::int64_t m_maximumNs = 0;
  std::uint64_t m_maximumSample = 0;
  double m_sumNs = 0;
  std::uint64_t m_samples = 0;
  std::uint64_t m_beyondLimit = 0;
  std::uint64_t m_beyond = 0;
  std::array<std::uint64_t, CLASSES> m_counts{};
};

} // namespace igh_bus

#endif
