// The AL state of one slave, what it is asked for, and why it is not there: single steps, without time.
#ifndef ETHERCAT_SIMULATION_AL_STATE_H
#define ETHERCAT_SIMULATION_AL_STATE_H

#include "slave/ProcessLink.h"

namespace ethercat_simulation {

class AlState {
public:
  explicit AlState(ProcessLink& link) : m_link(link) {}

  std::uint8_t value() const { return m_value; }
  // The error flag, which a slave that falls back by itself does not raise, and the error bit.
  bool hasErrorFlag() const { return m_faulty || m_refused || m_missed; }
  bool hasErrorBit() const { return m_faulty || m_refused || m_code != 0; }
  // The AL status code.
  std::uint16_t code() const;
  bool isToAcknowledge() const { return m_code != 0; }
  bool isRefused() const { return m_refused; }
  bool isRequested() const { return m_requested != 0; } // by the user
  bool restarts() const { return m_restart; }

  // Where it goes to, and the next state on the way.
  std::uint8_t target() const;
  std::uint8_t next() const;
  // False, with an error, when the slave refuses.
  bool go(std::uint8_t state);
  // The master takes the error bit back and asks for the old state; a slave whose trouble lasts refuses it.
  void acknowledge();

  // Only an active master asks its slaves for OP.
  void ask(bool active) { m_asked = active; }
  void request(std::uint8_t state);
  void restart();
  void endRestart() { m_restart = false; }
  void settle();
  void powerUp();

  void setFaulty(bool faulty) { m_faulty = faulty; }
  void setMissed(bool missed) { m_missed = missed; }
  void setMaximum(std::uint8_t state);
  // 0: the cause is gone.
  void setError(std::uint8_t state, std::uint16_t code);
  void forgiveRefusal() { m_refused = false; }
  // By itself, without a cause that lasts.
  void fail(std::uint8_t state, std::uint16_t code);

private:
  std::uint8_t stepTowards(std::uint8_t state) const;
  // Whether the slave goes on to this state; otherwise it says why.
  bool accepts(std::uint8_t state);
  void fallTo(std::uint8_t state);
  void forgetCode() { m_code = m_held ? m_code : std::uint16_t{0}; }

  ProcessLink& m_link;
  std::uint8_t m_value = STATE_INIT;
  std::uint8_t m_maximum = STATE_OP;
  std::uint8_t m_requested = 0; // by the user, 0 for none
  bool m_asked = false;         // for OP
  bool m_restart = false;       // the climb to come starts at INIT
  bool m_faulty = false;        // error flag set from the control side
  bool m_refused = false;       // error flag raised by a state change that the slave refused
  bool m_missed = false;        // error flag raised by no answer, until the scan
  std::uint16_t m_code = 0;
  bool m_held = false; // the cause of the code lasts
};

} // namespace ethercat_simulation

#endif
