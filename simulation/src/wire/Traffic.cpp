#include "wire/Traffic.h"

namespace ethercat_simulation {

Flight Traffic::nextFlight() {
  const bool lost = m_toDrop > 0;
  Flight flight{++m_sent, lost, !lost && m_toDelay > 0, m_latency > 0, 0, 0};
  if (lost) {
    --m_toDrop;
  } else if (flight.late) {
    --m_toDelay;
  }
  if (flight.timed) {
    flight.sent = m_time.now();
    flight.due = flight.sent + m_latency;
  }
  return flight;
}

bool Traffic::transmit(const Domains& domains) {
  const Flight flight = nextFlight();
  for (const auto& domain : domains) {
    domain->transmit(flight);
  }
  m_clock.transmit(flight);
  m_own.passed();
  if (!m_own.is(TravelState::sent)) {
    m_own.depart(flight);
  }
  return !flight.lost;
}

void Traffic::refuse(const Domains& domains) {
  for (const auto& domain : domains) {
    domain->refuse();
  }
  m_clock.fail();
  m_own.fail();
}

Traffic::Answer Traffic::receive(const Domains& domains, bool linkSeen) {
  for (const auto& domain : domains) {
    domain->land(m_time, m_timeout);
  }
  m_clock.land(m_time, m_timeout);
  const bool refused = m_own.is(TravelState::failed) && !linkSeen;
  const bool answered = m_own.arrive(m_time, m_timeout);
  const bool lost = m_own.is(TravelState::failed) && !refused;
  if (answered || refused || lost) {
    m_own.settle();
  }
  return answered ? Answer::frame : refused ? Answer::refusal : lost ? Answer::loss : Answer::none;
}

void Traffic::stop() {
  m_clock.stop();
  m_own = Travel();
}

} // namespace ethercat_simulation
