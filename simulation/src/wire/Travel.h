// The way of a frame, and of whatever was sent with it.
#ifndef ETHERCAT_SIMULATION_TRAVEL_H
#define ETHERCAT_SIMULATION_TRAVEL_H

#include "base/SimulatedTime.h"

namespace ethercat_simulation {

// What the sender wants to know about the way of a frame.
struct Flight {
  std::uint64_t number; // of the frame
  bool lost;
  bool late;  // found by no receive before the next send
  bool timed; // has a latency; sent and due count
  Moment sent;
  Moment due;
};

enum class TravelState : std::uint8_t { idle, queued, sent, received, failed };

// Where something that was sent is: on the way, back, or given up.
class Travel {
public:
  TravelState state() const { return m_state; }
  bool is(TravelState state) const { return m_state == state; }
  void queue() { m_state = TravelState::queued; }
  void fail() { m_state = TravelState::failed; }
  void settle() { m_state = TravelState::idle; }
  void depart(const Flight& flight);
  // The next send goes out, behind which a late frame is found.
  void passed() { m_late = false; }
  // True at the receive that finds it back. Nothing is awaited longer than the timeout. The time is only
  // asked where a latency makes a difference.
  bool arrive(const SimulatedTime& time, Moment timeout);

private:
  TravelState m_state = TravelState::idle;
  bool m_late = false;
  bool m_timed = false;
  Moment m_sent = 0;
  Moment m_due = 0;
};

} // namespace ethercat_simulation

#endif
