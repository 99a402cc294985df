// The time of a simulated bus, and waiting for it.
#ifndef ETHERCAT_SIMULATION_SIMULATED_TIME_H
#define ETHERCAT_SIMULATION_SIMULATED_TIME_H

#include <cstdint>

namespace ethercat_simulation {

// ns
using Moment = std::int64_t;
constexpr Moment MICROSECOND = 1000;
constexpr Moment MILLISECOND = 1'000'000;

// Follows the monotonic clock, or passes by cycles, the same for every run.
class SimulatedTime {
public:
  Moment now() const { return m_cycle > 0 ? m_virtual : monotonic(); }
  // What passes with each send; 0: the monotonic clock.
  void setCycle(Moment cycle);
  void pass(Moment time) { m_virtual += m_cycle > 0 ? time : 0; }
  void passCycle() { m_virtual += m_cycle; }
  bool isVirtual() const { return m_cycle > 0; }

private:
  static Moment monotonic();

  Moment m_cycle = 0;
  Moment m_virtual = 0;
};

// How long something takes: a number of rounds, or, without one, a time.
struct Span {
  unsigned int rounds;
  Moment time;
};

// A wait for the end of a span.
class Wait {
public:
  void begin(const Span& span, Moment now) {
    m_rounds = span.rounds;
    m_counted = span.rounds > 0;
    m_due = now + span.time;
  }
  // One more round has come at this moment. True when that ends the wait.
  bool ends(Moment now) { return m_counted ? --m_rounds == 0 : now >= m_due; }

private:
  unsigned int m_rounds = 0;
  bool m_counted = false;
  Moment m_due = 0;
};

} // namespace ethercat_simulation

#endif
