// One slave on the wire: what it is, its AL state and the climb of that state.
#ifndef ETHERCAT_SIMULATION_SLAVE_UNIT_H
#define ETHERCAT_SIMULATION_SLAVE_UNIT_H

#include "EscRegisters.h"
#include "ObjectDictionary.h"

namespace ethercat_simulation {

class SlaveConfiguration;

class SlaveUnit {
public:
  explicit SlaveUnit(const Slave& identity) : m_identity(identity), m_dictionary(identity.objects) {}

  const Slave& identity() const { return m_identity; }
  std::uint8_t state() const { return m_state; }
  bool ready() const { return !m_busy; }
  bool hasError() const { return m_faulty || m_refused; }
  bool operational() const { return m_state == stateOp && !m_restart; }
  // Its process data are in use: sync managers and FMMUs are written, and somebody is there to answer.
  bool exchanges() const { return m_state >= stateSafeop && responding(); }
  bool responding() const { return m_present && m_responding; }
  bool hasMailbox() const { return m_state != stateInit && !hasError(); }
  ObjectDictionary& dictionary() { return m_dictionary; }
  const ObjectDictionary& dictionary() const { return m_dictionary; }
  EscRegisters& registers() { return m_registers; }
  const EscRegisters& registers() const { return m_registers; }
  bool takesOutputs() const { return m_state == stateOp; }

  // The configuration that the last scan attached, and the one whose FMMUs the slave carries. They differ
  // while the master scans anew: what has been written to a slave goes on working meanwhile.
  SlaveConfiguration* attached() const { return m_attached; }
  const SlaveConfiguration* written() const { return m_written; }
  void attach(SlaveConfiguration* configuration) { m_attached = configuration; }

  // One round of the slave's state machine. False when it has nothing left to do.
  bool step(unsigned int climbCycles, unsigned int stagger);
  // The climb to come starts at INIT, whatever the state is.
  void restart() {
    m_restart = true;
    m_refused = false;
    m_requested = 0;
  }
  // Asked for by the user: holds until the next restart or settling, and clears the error flag.
  void request(std::uint8_t state);
  // Back to PREOP at once: the master stopped, or scans a slave that has just been switched on.
  void settle();

  void setFaulty(bool faulty) { m_faulty = faulty; }
  void setResponding(bool responding);
  void setMaximumState(std::uint8_t state);
  void unplug() { m_present = false; }

  // Forgets a configuration that is about to be freed.
  void forgetConfiguration();

  void pinInputs(const std::vector<std::uint8_t>& bytes) { m_pinnedInputs = bytes; }
  const std::vector<std::uint8_t>& pinnedInputs() const { return m_pinnedInputs; }
  std::vector<std::uint8_t> outputs() const;

private:
  std::uint8_t wantedState() const;
  std::uint8_t stepTowards(std::uint8_t state) const;
  void enter(std::uint8_t state);

  Slave m_identity;
  ObjectDictionary m_dictionary;
  EscRegisters m_registers;
  std::uint8_t m_state = stateInit;
  std::uint8_t m_maximumState = stateOp;
  std::uint8_t m_requested = 0; // by the user, 0 for none
  bool m_present = true;
  bool m_responding = true;
  bool m_faulty = false;  // error flag set from the control side
  bool m_refused = false; // error flag raised by a state change beyond the maximum
  bool m_restart = false;
  bool m_busy = false;
  unsigned int m_wait = 0; // cycles until the state change in progress is done
  SlaveConfiguration* m_attached = nullptr;
  SlaveConfiguration* m_written = nullptr;
  std::vector<std::uint8_t> m_pinnedInputs;
};

} // namespace ethercat_simulation

#endif
