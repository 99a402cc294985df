#include "wire/Travel.h"

namespace ethercat_simulation {

void Travel::depart(const Flight& flight) {
  m_state = flight.lost ? TravelState::failed : TravelState::sent;
  m_late = flight.late;
  m_timed = flight.timed;
  m_sent = flight.sent;
  m_due = flight.due;
}

bool Travel::arrive(const SimulatedTime& time, Moment timeout) {
  if (m_state != TravelState::sent || m_late) {
    return false;
  }
  if (m_timed) {
    const Moment moment = time.now();
    if (moment < m_due) {
      if (moment - m_sent > timeout) {
        m_state = TravelState::failed;
      }
      return false;
    }
  }
  m_state = TravelState::received;
  return true;
}

} // namespace ethercat_simulation
