// One slave on the wire: what it is, and its parts.
#ifndef ETHERCAT_SIMULATION_SLAVE_UNIT_H
#define ETHERCAT_SIMULATION_SLAVE_UNIT_H

#include "drive/DriveModel.h"
#include "slave/AlCourse.h"
#include "slave/EscRegisters.h"

#include <memory>

namespace ethercat_simulation {

// What a slave sends in place of what its model says.
struct PinnedEntry {
  std::uint16_t index;
  std::uint8_t subindex;
  std::uint64_t value;
};
struct InputPins {
  std::vector<std::uint8_t> bytes; // of all input sync managers in order; empty: the model's
  std::vector<PinnedEntry> entries;
};

class SlaveUnit {
public:
  explicit SlaveUnit(const Slave& identity);

  const Slave& identity() const { return m_identity; }
  ObjectDictionary& dictionary() { return m_dictionary; }
  const ObjectDictionary& dictionary() const { return m_dictionary; }
  SlavePdos& pdos() { return m_pdos; }
  EscRegisters& registers() { return m_registers; }
  const EscRegisters& registers() const { return m_registers; }

  std::uint8_t state() const { return m_state.value(); }
  bool ready() const { return !m_course.isBusy(); }
  bool hasError() const { return m_state.hasErrorFlag(); }
  bool alError() const { return m_state.hasErrorBit(); }
  std::uint16_t alCode() const { return m_state.code(); }
  bool operational() const { return state() == STATE_OP && !m_state.restarts(); }
  bool hasMailbox() const { return m_identity.coe && state() != STATE_INIT && !alError(); }
  bool takesOutputs() const { return state() == STATE_OP; }
  // Its process data are in use: sync managers and FMMUs are written, and somebody is there to answer.
  bool exchanges() const { return m_link.isOpen() && responding(); }

  SlaveConfiguration* attached() const { return m_link.attached(); }
  const SlaveConfiguration* written() const { return m_link.written(); }
  void attach(SlaveConfiguration* configuration) { m_link.attach(configuration); }
  void forgetConfiguration() { m_link.forget(); }
  void resume() { m_link.resume(); }
  std::vector<std::uint8_t> outputs() const { return m_link.outputs(); }
  std::vector<std::uint8_t> inputs() const { return m_link.inputs(); }
  bool outputValue(std::uint16_t index, std::uint8_t subindex, std::uint64_t& value) const {
    return m_link.outputValue(index, subindex, value);
  }
  // Both are kept with the slave, whoever configures it.
  void pinInputs(const std::vector<std::uint8_t>& bytes) { m_pins = {bytes, {}}; }
  void pinInput(const PinnedEntry& entry);
  const InputPins& pins() const { return m_pins; }

  // Only an active master asks its slaves for OP.
  void ask(bool active) { m_state.ask(active); }
  // One round of the slave's state machine, counted in cycles. False when it has nothing left to do.
  bool step(unsigned int climbCycles, unsigned int stagger) { return m_course.step(climbCycles, stagger); }
  // The same in time. Slaves climb in turn; a change of the state that somebody asked for, or that
  // acknowledges an error, does not wait.
  bool hasCourse() const { return m_course.isNeeded(); }
  bool takesTurn() const { return !m_state.isRequested() && !m_state.isToAcknowledge(); }
  bool underWay() const { return m_course.isUnderWay(); }
  void begin(Moment now) { m_course.begin(now); }
  bool advance(Moment now) { return m_course.advance(now); } // false: it is done
  void halt() { m_course.halt(); }
  // The climb to come starts at INIT, whatever the state is.
  void restart() { m_state.restart(); }
  // Asked for by the user: holds until the next restart or settling, and clears the error flag.
  void request(std::uint8_t state);
  // To PREOP at once: the master stopped, or scans a slave that has just been switched on.
  void settle();

  bool present() const { return m_present; }
  void setPresent(bool present) { m_present = present; }
  bool responding() const { return m_present && m_responding; }
  void setResponding(bool responding);
  bool isPowered() const { return m_powered; }
  void setPowered(bool powered);
  bool isWireBroken() const { return m_wireBroken; } // behind it
  void setWireBroken(bool broken) { m_wireBroken = broken; }

  void setFaulty(bool faulty) { m_state.setFaulty(faulty); }
  void setMissed() { m_state.setMissed(true); }
  void setMaximumState(std::uint8_t state);
  // 0: the cause is gone, and an error that is not acknowledged yet will be.
  void setAlError(std::uint8_t state, std::uint16_t code);
  void forgiveRefusal() { m_state.forgiveRefusal(); }

  bool hasDrive() const { return m_drive != nullptr; }
  // False: it is none.
  bool setDriveTrouble(DriveTrouble trouble, bool on, std::uint16_t errorCode);
  // One cycle of the drive. True when that has changed the AL state.
  bool stepDrive();

private:
  Slave m_identity;
  ObjectDictionary m_dictionary;
  SlavePdos m_pdos{m_identity, m_dictionary};
  EscRegisters m_registers;
  std::unique_ptr<DriveModel> m_drive;
  ProcessLink m_link{*this};
  AlState m_state{m_link};
  AlCourse m_course{m_state, m_link, Moment{m_identity.configurationUs} * MICROSECOND};
  bool m_present = true;
  bool m_responding = true;
  bool m_powered = true;
  bool m_wireBroken = false;
  InputPins m_pins;
};

} // namespace ethercat_simulation

#endif
