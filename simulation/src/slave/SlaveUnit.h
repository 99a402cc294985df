// One slave on the wire: what it is, its AL state and the climb of that state.
#ifndef ETHERCAT_SIMULATION_SLAVE_UNIT_H
#define ETHERCAT_SIMULATION_SLAVE_UNIT_H

#include "base/SimulatedTime.h"
#include "drive/DriveModel.h"
#include "slave/EscRegisters.h"
#include "slave/SlavePdos.h"

#include <memory>

namespace ethercat_simulation {

class SlaveConfiguration;

// Where an FMMU puts a sync manager, as the slave knows it.
struct FmmuPlace {
  unsigned int domain;
  unsigned int syncManager;
  std::size_t offset;
  std::size_t size;
  bool operator==(const FmmuPlace& other) const {
    return domain == other.domain && syncManager == other.syncManager && offset == other.offset &&
           size == other.size;
  }
};

class SlaveUnit {
public:
  explicit SlaveUnit(const Slave& identity);

  const Slave& identity() const { return m_identity; }
  std::uint8_t state() const { return m_state; }
  bool ready() const { return !m_busy; }
  // The error flag, which a slave that falls back by itself does not raise, and the error bit of its AL
  // state.
  bool hasError() const { return m_faulty || m_refused || m_missed; }
  bool alError() const { return m_faulty || m_refused || m_alCode != 0; }
  std::uint16_t alCode() const;
  bool operational() const { return m_state == STATE_OP && !m_restart; }
  // Its process data are in use: sync managers and FMMUs are written, and somebody is there to answer.
  bool exchanges() const { return m_open && responding(); }
  bool responding() const { return m_present && m_responding; }
  bool hasMailbox() const { return m_identity.coe && m_state != STATE_INIT && !alError(); }
  ObjectDictionary& dictionary() { return m_dictionary; }
  const ObjectDictionary& dictionary() const { return m_dictionary; }
  SlavePdos& pdos() { return m_pdos; }
  EscRegisters& registers() { return m_registers; }
  const EscRegisters& registers() const { return m_registers; }
  bool takesOutputs() const { return m_state == STATE_OP; }

  // The configuration that the last scan attached, and the one whose FMMUs the slave carries. They differ
  // while the master scans anew: what has been written to a slave goes on working meanwhile.
  SlaveConfiguration* attached() const { return m_attached; }
  const SlaveConfiguration* written() const { return m_written; }
  void attach(SlaveConfiguration* configuration) { m_attached = configuration; }

  // Only an active master asks its slaves for OP.
  void ask(bool active) { m_asked = active; }
  // One round of the slave's state machine, counted in cycles. False when it has nothing left to do.
  bool step(unsigned int climbCycles, unsigned int stagger);
  // The same in time: what there is to do is begun and advanced, one round after the other. Slaves climb in
  // turn; a change of the state that somebody asked for, or that acknowledges an error, does not wait.
  bool hasCourse() const { return nextCourse() != Course::none; }
  bool takesTurn() const { return m_requested == 0 && m_alCode == 0; }
  bool underWay() const { return m_course != Course::none; }
  void begin(Moment now);
  bool advance(Moment now); // false: it is done
  void halt();
  // The climb to come starts at INIT, whatever the state is.
  void restart();
  // Asked for by the user: holds until the next restart or settling, and clears the error flag.
  void request(std::uint8_t state);
  // To PREOP at once: the master stopped, or scans a slave that has just been switched on.
  void settle();

  void setFaulty(bool faulty) { m_faulty = faulty; }
  void setResponding(bool responding);
  void setMaximumState(std::uint8_t state);
  void setPresent(bool present) { m_present = present; }
  void setMissed() { m_missed = true; }
  bool present() const { return m_present; }
  // 0: the cause is gone, and an error that is not acknowledged yet will be.
  void setAlError(std::uint8_t state, std::uint16_t code);
  void forgiveRefusal() { m_refused = false; }
  bool isPowered() const { return m_powered; }
  void setPowered(bool powered);
  bool isWireBroken() const { return m_wireBroken; } // behind it
  void setWireBroken(bool broken) { m_wireBroken = broken; }
  // One cycle of the drive. True when that has changed the AL state.
  bool hasDrive() const { return m_drive != nullptr; }
  bool stepDrive();

  // Forgets a configuration that is about to be freed; the slave keeps its FMMUs and its last outputs.
  void forgetConfiguration();
  // The FMMUs that it still carries are those of the attached configuration: it answers in its name.
  void resume();

  void pinInputs(const std::vector<std::uint8_t>& bytes) { m_pinnedInputs = bytes; }
  const std::vector<std::uint8_t>& pinnedInputs() const { return m_pinnedInputs; }
  std::vector<std::uint8_t> outputs() const;

private:
  enum class Course : std::uint8_t { none, climb, change, recover };

  std::uint8_t target() const;
  Course nextCourse() const;
  void takeStage();
  void takeClimbStage();
  bool go(std::uint8_t state);
  void writeProcessData();
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
  std::uint8_t m_state = STATE_INIT;
  std::uint8_t m_maximumState = STATE_OP;
  std::uint8_t m_requested = 0; // by the user, 0 for none
  bool m_present = true;
  bool m_responding = true;
  bool m_faulty = false;  // error flag set from the control side
  bool m_refused = false; // error flag raised by a state change that the slave refused
  bool m_missed = false;  // error flag raised by no answer, until the scan
  bool m_asked = false;   // for OP
  bool m_open = false;    // sync managers and FMMUs are written
  std::uint16_t m_alCode = 0;
  bool m_alHeld = false; // the cause of the code lasts
  bool m_powered = true;
  bool m_wireBroken = false;
  bool m_restart = false;
  bool m_busy = false;
  unsigned int m_wait = 0; // cycles until the state change in progress is done
  Course m_course = Course::none;
  unsigned int m_stage = 0; // of a climb
  Moment m_due = 0;         // of the course's next stage
  SlaveConfiguration* m_attached = nullptr;
  SlaveConfiguration* m_written = nullptr;
  std::vector<std::uint8_t> m_pinnedInputs;
  std::vector<std::uint8_t> m_lastOutputs;
  std::vector<FmmuPlace> m_carried; // FMMUs of the last life
};

} // namespace ethercat_simulation

#endif
