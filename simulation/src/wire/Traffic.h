// The frames of one master: what goes out with a send, and what a receive finds back.
#ifndef ETHERCAT_SIMULATION_TRAFFIC_H
#define ETHERCAT_SIMULATION_TRAFFIC_H

#include "wire/Clock.h"
#include "wire/Domain.h"

namespace ethercat_simulation {

class Traffic {
public:
  Traffic(const SimulatedTime& time, Clock& clock) : m_time(time), m_clock(clock) {}

  // Control side.
  void setLatency(Moment latency) { m_latency = latency; }
  void setTimeout(Moment timeout) { m_timeout = timeout; }
  void drop(unsigned int frames) { m_toDrop = frames; }
  void delay(unsigned int frames) { m_toDelay = frames; }
  std::uint64_t sent() const { return m_sent; }

  // False: the frame broke on its way to the first slave.
  bool transmit(const Domains& domains);
  // The link is down: no frame goes out.
  void refuse(const Domains& domains);

  // What has become of the frame that carries the master's own datagrams.
  enum class Answer : std::uint8_t { none, frame, refusal, loss };
  // A refusal is seen only by a sender that knows that the link is down.
  Answer receive(const Domains& domains, bool linkSeen);
  // Deactivation: nothing is on its way any more.
  void stop();

private:
  Flight nextFlight();

  const SimulatedTime& m_time;
  Clock& m_clock;
  Travel m_own; // of the master's own datagrams
  std::uint64_t m_sent = 0;
  unsigned int m_toDrop = 0;
  unsigned int m_toDelay = 0;
  Moment m_latency = 0;
  // One tick of a 250 Hz kernel: what the real master waits at least when it is built without a cycle
  // counter.
  Moment m_timeout = 4 * MILLISECOND;
};

} // namespace ethercat_simulation

#endif
