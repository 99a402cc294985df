// How a run went from its first cycle to its last, in a fixed number of intervals: when no interval is left,
// each two become one. Nothing is allocated in the cycle.
#ifndef IGH_BUS_REPORT_COURSE_H
#define IGH_BUS_REPORT_COURSE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <igh_master.h>

namespace igh_bus {

// Durations counted in eight classes per octave, from 512 ns to 33.5 ms, one below and one above. The middle
// of a class is at most 1/16 away from what was counted in it, below 512 ns at most 256 ns.
class CoarseHistogram {
public:
  void add(std::int64_t ns) { ++m_counts[classOf(ns)]; }
  void add(const CoarseHistogram& other);
  // The median of `samples` durations that all lie between these two.
  std::int64_t medianNs(std::uint64_t samples, std::int64_t minimumNs, std::int64_t maximumNs) const;

private:
  static constexpr unsigned LOWEST_OCTAVE = 9; // 2^9 ns
  static constexpr unsigned OCTAVES = 16;
  static constexpr unsigned PER_OCTAVE_BITS = 3;
  static constexpr std::size_t CLASSES = (OCTAVES << PER_OCTAVE_BITS) + 2;

  static std::size_t classOf(std::int64_t ns);
  static std::int64_t middleNs(std::size_t place, std::int64_t maximumNs);

  std::array<std::uint32_t, CLASSES> m_counts{};
};

// What one exchange spent, in whole us, as the library's own record has it.
struct Costs {
  enum Part { receive, sdo, callback, send, total, parts };
  std::array<std::uint64_t, parts> us{};

  static Costs of(const _ETHERCAT_COMM_DIAG_INFO& record);
  void add(const Costs& other);
};

struct Interval {
  std::uint64_t first = 0; // cycle
  std::uint64_t cycles = 0;
  std::int64_t minimumNs = 0; // of the wake-up latency
  std::int64_t maximumNs = 0;
  std::uint64_t maximumCycle = 0;
  CoarseHistogram latencies;
  Costs sums;
  std::uint64_t longestUs = 0; // exchange

  std::int64_t medianNs() const { return latencies.medianNs(cycles, minimumNs, maximumNs); }
  double meanUs(Costs::Part part) const {
    return static_cast<double>(sums.us[part]) / static_cast<double>(cycles);
  }
  void add(const Interval& next);
};

class Course {
public:
  static constexpr std::size_t MOST = 400;

  void note(std::int64_t wakeUpLatencyNs, const Costs& costs);

  const Interval* begin() const { return m_intervals.data(); }
  const Interval* end() const { return m_intervals.data() + m_used; } // the last one may be shorter
  std::uint64_t cyclesPerInterval() const { return m_length; }
  const Costs& slowest() const { return m_slowest; } // of all exchanges
  std::uint64_t slowestCycle() const { return m_slowestCycle; }

private:
  void halve();

  std::array<Interval, MOST> m_intervals{};
  std::size_t m_used = 0;
  std::uint64_t m_length = 1;
  std::uint64_t m_cycle = 0;
  Costs m_slowest;
  std::uint64_t m_slowestCycle = 0;
};

} // namespace igh_bus

#endif
