#include "slave/SlaveUnit.h"

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t WATCHDOG_CODE = 0x001B;

Slave completed(Slave slave) {
  if (slave.model == SlaveModel::drive) {
    completeDriveObjects(slave);
  }
  return slave;
}

ObjectBytes objectBytes(ObjectDictionary& dictionary) {
  return [&dictionary](std::uint16_t index, std::uint8_t subindex) -> std::vector<std::uint8_t>& {
    return *dictionary.bytes(index, subindex);
  };
}

} // namespace

SlaveUnit::SlaveUnit(const Slave& identity)
    : m_identity(completed(identity)), m_dictionary(m_identity.objects),
      m_drive(identity.model == SlaveModel::drive
                  ? std::make_unique<DriveModel>(objectBytes(m_dictionary), identity.drive)
                  : nullptr) {}

void SlaveUnit::request(std::uint8_t state) {
  m_state.request(state);
  m_course.stopWaiting();
  m_course.halt();
}

void SlaveUnit::settle() {
  m_course.halt();
  m_course.stopWaiting();
  m_state.settle();
}

void SlaveUnit::setResponding(bool responding) {
  if (m_responding && !responding) {
    m_registers.count(EscRegisters::PDI_ERROR);
  }
  m_responding = responding;
}

void SlaveUnit::setPowered(bool powered) {
  m_powered = powered;
  if (powered) {
    m_state.powerUp();
    m_link.powerUp();
    m_course.halt();
    m_course.stopWaiting();
    m_registers.clear();
    m_dictionary.restore(m_identity.objects);
    m_pdos.restore();
    if (m_drive != nullptr) {
      m_drive->powerUp();
    }
  }
}

void SlaveUnit::setMaximumState(std::uint8_t state) {
  m_course.stopWaiting();
  m_state.setMaximum(state);
}

void SlaveUnit::setAlError(std::uint8_t state, std::uint16_t code) {
  m_course.stopWaiting();
  m_state.setError(state, code);
}

bool SlaveUnit::setDriveTrouble(DriveTrouble trouble, bool on, std::uint16_t errorCode) {
  if (m_drive == nullptr) {
    return false;
  }
  m_drive->troubles().set(trouble, on);
  if (trouble == DriveTrouble::fault) {
    m_drive->troubles().setErrorCode(errorCode);
  }
  return true;
}

bool SlaveUnit::stepDrive() {
  if (!m_powered) {
    return false;
  }
  const bool fresh = m_link.takeObjects();
  m_drive->step(state() == STATE_OP, fresh);
  const bool expired = m_drive->watchdogExpired();
  if (expired) {
    m_course.stopWaiting();
    m_state.fail(STATE_SAFEOP, WATCHDOG_CODE);
  }
  return expired;
}

void SlaveUnit::pinInput(const PinnedEntry& entry) {
  for (PinnedEntry& pinned : m_pins.entries) {
    if (pinned.index == entry.index && pinned.subindex == entry.subindex) {
      pinned.value = entry.value;
      return;
    }
  }
  m_pins.entries.push_back(entry);
}

} // namespace ethercat_simulation
