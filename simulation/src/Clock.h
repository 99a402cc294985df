// The time calls. The reference clock is ideal: it shows the application time of the frame that read it.
#ifndef ETHERCAT_SIMULATION_CLOCK_H
#define ETHERCAT_SIMULATION_CLOCK_H

#include "Datagram.h"

#include <cerrno>

namespace ethercat_simulation {

class Clock {
public:
  void setApplicationTime(std::uint64_t time) { m_applicationTime = time; }
  void queueRead() { m_read.queue(); }
  void transmit(const Flight& flight) {
    if (m_read.is(TravelState::queued)) {
      m_read.depart(flight);
      m_sentTime = m_applicationTime;
    }
  }
  void fail() { m_read.fail(); }
  void land(Moment timeout) { m_read.arrive(timeout); }

  // 0, or -EIO when the frame that reads the clock has not come back.
  int referenceTime(std::uint32_t& time) const {
    if (!m_read.is(TravelState::received)) {
      return -EIO;
    }
    time = static_cast<std::uint32_t>(m_sentTime);
    return 0;
  }

private:
  std::uint64_t m_applicationTime = 0;
  std::uint64_t m_sentTime = 0;
  Travel m_read;
};

} // namespace ethercat_simulation

#endif
