// The time calls and the clock of the reference slave: ideal, or free-running on the real time.
#ifndef ETHERCAT_SIMULATION_CLOCK_H
#define ETHERCAT_SIMULATION_CLOCK_H

#include "wire/Travel.h"

#include <ethercat_simulation/Timing.h>

#include <random>

namespace ethercat_simulation {

class Clock {
public:
  // Control side.
  void runFree(const ReferenceClock& plan);
  void setOffsetCycles(unsigned int cycles) { m_offsetCycles = cycles; }
  std::uint64_t referenceTime() const; // without jitter
  void step(std::int64_t nanoseconds) { m_correction += nanoseconds; }

  // Activation and deactivation.
  void start();
  void stop();

  void setApplicationTime(std::uint64_t time) { m_applicationTime = time; }
  void queueReferenceSync() { m_syncQueued = offsetsKnown(); }
  void queueRead();
  void transmit(const Flight& flight);
  void fail() { m_read.fail(); }
  void land(const SimulatedTime& time, Moment timeout);

  // 0, -EAGAIN while the offsets are not known, or -EIO when the frame that reads the clock has not come
  // back.
  int referenceTime(std::uint32_t& time) const;

private:
  bool offsetsKnown() const { return m_receives >= m_offsetCycles; }
  std::uint64_t latch();

  bool m_free = false;
  ReferenceClock m_plan;
  std::minstd_rand m_random;
  std::int64_t m_started = 0;    // real time
  std::int64_t m_correction = 0; // by steps, and by synchronising to the master
  unsigned int m_offsetCycles = 0;
  unsigned int m_receives = 0; // since activation
  std::uint64_t m_applicationTime = 0;
  std::uint64_t m_sentTime = 0;
  bool m_syncQueued = false;
  Travel m_read;
};

} // namespace ethercat_simulation

#endif
