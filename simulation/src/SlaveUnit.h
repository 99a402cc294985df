// One slave on the wire: what it is, its AL state and the climb of that state.
#ifndef ETHERCAT_SIMULATION_SLAVE_UNIT_H
#define ETHERCAT_SIMULATION_SLAVE_UNIT_H

#include "DriveModel.h"
#include "EscRegisters.h"
#include "SlavePdos.h"

#include <memory>

namespace ethercat_simulation {

class SlaveConfiguration;

class SlaveUnit {
public:
  explicit SlaveUnit(const Slave& identity);

  const Slave& identity() const { return m_identity; }
  std::uint8_t state() const { return m_state; }
  bool ready() const { return !m_busy; }
  bool hasError() const { return m_faulty || m_refused || m_alCode != 0; }
  std::uint16_t alCode() const { return m_alCode; }
  bool operational() const { return m_state == stateOp && !m_restart; }
  // Its process data are in use: sync managers and FMMUs are written, and somebody is there to answer.
  bool exchanges() const { return m_state >= stateSafeop && responding(); }
  bool responding() const { return m_present && m_responding; }
  bool hasMailbox() const { return m_state != stateInit && !hasError(); }
  ObjectDictionary& dictionary() { return m_dictionary; }
  const ObjectDictionary& dictionary() const { return m_dictionary; }
  SlavePdos& pdos() { return m_pdos; }
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
  void restart();
  // Asked for by the user: holds until the next restart or settling, and clears the error flag.
  void request(std::uint8_t state);
  // Back to PREOP at once: the master stopped, or scans a slave that has just been switched on.
  void settle();

  void setFaulty(bool faulty) { m_faulty = faulty; }
  void setResponding(bool responding);
  void setMaximumState(std::uint8_t state);
  void setPresent(bool present) { m_present = present; }
  // 0: the cause is gone, and the error is acknowledged within a state change's time.
  void setAlError(std::uint8_t state, std::uint16_t code);
  bool isPowered() const { return m_powered; }
  void setPowered(bool powered);
  bool isWireBroken() const { return m_wireBroken; } // behind it
  void setWireBroken(bool broken) { m_wireBroken = broken; }
  // One cycle of the drive. True when that has changed the AL state.
  bool hasDrive() const { return m_drive != nullptr; }
  bool stepDrive();

  // Forgets a configuration that is about to be freed.
  void forgetConfiguration();

  void pinInputs(const std::vector<std::uint8_t>& bytes) { m_pinnedInputs = bytes; }
  const std::vector<std::uint8_t>& pinnedInputs() const { return m_pinnedInputs; }
  std::vector<std::uint8_t> outputs() const;

private:
  std::uint8_t wantedState() const;
  std::uint8_t stepTowards(std::uint8_t state) const;
  void enter(std::uint8_t state);
  void fallTo(std::uint8_t state);
  // Whether the slave goes on to this state; otherwise it says why.
  bool accepts(std::uint8_t state);
  bool acknowledge(unsigned int climbCycles);

  Slave m_identity;
  ObjectDictionary m_dictionary;
  SlavePdos m_pdos{m_identity, m_dictionary};
  EscRegisters m_registers;
  std::unique_ptr<DriveModel> m_drive;
  std::uint8_t m_state = stateInit;
  std::uint8_t m_maximumState = stateOp;
  std::uint8_t m_requested = 0; // by the user, 0 for none
  bool m_present = true;
  bool m_responding = true;
  bool m_faulty = false;  // error flag set from the control side
  bool m_refused = false; // error flag raised by a state change beyond the maximum
  std::uint16_t m_alCode = 0;
  bool m_alHeld = false; // the cause of the code lasts
  bool m_powered = true;
  bool m_wireBroken = false;
  bool m_restart = false;
  bool m_busy = false;
  unsigned int m_wait = 0; // cycles until the state change in progress is done
  SlaveConfiguration* m_attached = nullptr;
  SlaveConfiguration* m_written = nullptr;
  std::vector<std::uint8_t> m_pinnedInputs;
};

} // namespace ethercat_simulation

#endif
