// What a run leaves for its report, counted in the cycle into places of fixed number.
#ifndef IGH_BUS_REPORT_RECORDING_H
#define IGH_BUS_REPORT_RECORDING_H

#include "report/Course.h"
#include "report/Histogram.h"

namespace igh_bus {

// An error that lasted from one cycle to another, both included.
struct ErrorSpan {
  std::uint64_t first;
  std::uint64_t last;
  std::uint64_t count; // callbacks: more than one per cycle where several slaves raise it
  int code;
};

struct ClockPoint {
  std::uint64_t cycle;
  std::int64_t differenceNs; // at the end of an interval of the library's controller, and its extremes in it
  std::int64_t minimumNs;
  std::int64_t maximumNs;
  std::int64_t offsetNs;
};

class Recording {
public:
  enum Phase { wakeUp, receive, sdo, callback, send, total, phases };
  static const char* name(Phase phase); // as a key
  static const char* title(Phase phase);

  explicit Recording(std::int64_t periodNs);

  // In the cycle. Costs are those of the library's own record.
  void note(std::int64_t wakeUpLatencyNs, const _ETHERCAT_COMM_DIAG_INFO& costs);
  // `totals` counts the callbacks of each error code up to now.
  void noteErrors(std::uint64_t cycle, const std::array<std::uint64_t, 6>& totals);
  void noteClock(const ClockPoint& point);

  const Histogram& histogram(Phase phase) const { return m_histograms[phase]; }
  const Course& course() const { return m_course; }
  const ErrorSpan* begin() const { return m_spans.data(); }
  const ErrorSpan* end() const { return m_spans.data() + m_spanCount; }
  std::uint64_t lostErrors() const { return m_lostErrors; } // callbacks that found no place any more
  const ClockPoint* clock() const { return m_clock.data(); }
  std::size_t clockPoints() const { return m_clockCount; }

private:
  void noteError(std::uint64_t cycle, int code, std::uint64_t count);

  std::array<Histogram, phases> m_histograms;
  Course m_course;
  std::array<ErrorSpan, 2048> m_spans{};
  std::array<std::uint64_t, 6> m_totals{};
  std::array<std::size_t, 6> m_latest{}; // per code, one past its latest span
  std::size_t m_spanCount = 0;
  std::uint64_t m_lostErrors = 0;
  std::array<ClockPoint, 2048> m_clock{};
  std::size_t m_clockCount = 0;
  std::uint64_t m_clockStride = 1; // one point is kept of so many
  std::uint64_t m_clockSeen = 0;
};

} // namespace igh_bus

#endif
