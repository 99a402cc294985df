#include "slave/SlaveUnit.h"

#include "slave/SlaveConfiguration.h"

#include <algorithm>

namespace ethercat_simulation {

namespace {

bool isState(std::uint8_t state) {
  return state == STATE_INIT || state == STATE_PREOP || state == STATE_BOOT || state == STATE_SAFEOP ||
         state == STATE_OP;
}

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

constexpr std::uint16_t WATCHDOG_CODE = 0x001B;
constexpr std::uint16_t REFUSAL_CODE = 0x0011; // invalid requested state change

} // namespace

SlaveUnit::SlaveUnit(const Slave& identity)
    : m_identity(completed(identity)), m_dictionary(m_identity.objects),
      m_drive(identity.model == SlaveModel::drive
                  ? std::make_unique<DriveModel>(objectBytes(m_dictionary), identity.drive)
                  : nullptr) {}

std::uint16_t SlaveUnit::alCode() const {
  return m_alCode == 0 && m_refused ? REFUSAL_CODE : m_alCode;
}

std::uint8_t SlaveUnit::wantedState() const {
  if (m_restart && m_attached != nullptr) {
    return STATE_INIT;
  }
  if (m_requested != 0) {
    return stepTowards(m_requested);
  }
  if (m_attached == nullptr || !m_asked) {
    return STATE_PREOP;
  }
  switch (m_state) {
  case STATE_INIT:
    return STATE_PREOP;
  case STATE_PREOP:
    return STATE_SAFEOP;
  default:
    return STATE_OP;
  }
}

// Down in one go, up one state at a time; BOOT is reached from INIT only and left to it only.
std::uint8_t SlaveUnit::stepTowards(std::uint8_t state) const {
  const bool boot = m_state == STATE_BOOT || state == STATE_BOOT;
  if (!isState(state) || (state <= m_state && !boot)) {
    return state;
  }
  switch (m_state) {
  case STATE_INIT:
    return state == STATE_BOOT ? STATE_BOOT : STATE_PREOP;
  case STATE_PREOP:
    return boot ? STATE_INIT : STATE_SAFEOP;
  default:
    return state == m_state ? state : boot ? STATE_INIT : STATE_OP;
  }
}

void SlaveUnit::request(std::uint8_t state) {
  m_requested = state;
  m_faulty = false;
  m_refused = false;
  m_alCode = m_alHeld ? m_alCode : std::uint16_t{0};
  m_wait = 0;
  halt();
}

void SlaveUnit::setResponding(bool responding) {
  if (m_responding && !responding) {
    m_registers.count(EscRegisters::PDI_ERROR);
  }
  m_responding = responding;
}

bool SlaveUnit::step(unsigned int climbCycles, unsigned int stagger) {
  if (m_alCode != 0 && !m_refused && !acknowledge(climbCycles)) {
    return true;
  }
  const std::uint8_t wanted = wantedState();
  if ((wanted == m_state && !m_restart) || hasError()) {
    m_busy = false;
    return false;
  }
  if (m_wait == 0) {
    m_wait = climbCycles + (m_busy ? 0 : stagger);
    m_busy = true;
  }
  if (--m_wait > 0) {
    return true;
  }
  go(wanted);
  m_open = m_open && m_state >= STATE_SAFEOP;
  m_busy = !m_refused && wantedState() != m_state;
  return true;
}

bool SlaveUnit::go(std::uint8_t state) {
  m_refused = !accepts(state);
  if (!m_refused) {
    enter(state);
  }
  m_open = m_open && !(m_refused && state == STATE_SAFEOP);
  return !m_refused;
}

bool SlaveUnit::accepts(std::uint8_t state) {
  const bool needsConfiguration = state >= STATE_SAFEOP && m_attached == nullptr;
  if (state > m_maximumState || !isState(state) || needsConfiguration) {
    return false;
  }
  // The code stays until the next request or climb: nobody asks a slave again that has refused.
  m_alCode = m_state == STATE_PREOP && state == STATE_SAFEOP ? m_attached->writeTo(*this) : std::uint16_t{0};
  return m_alCode == 0;
}

// The master takes the error bit back, which takes as long as a change of the state, and asks for the old
// state; a slave whose trouble lasts refuses it.
bool SlaveUnit::acknowledge(unsigned int climbCycles) {
  m_busy = true;
  m_wait = m_wait == 0 ? climbCycles : m_wait;
  if (--m_wait == 0) {
    m_refused = m_alHeld;
    m_alCode = m_alHeld ? m_alCode : std::uint16_t{0};
  }
  return m_wait == 0;
}

void SlaveUnit::restart() {
  m_restart = true;
  m_refused = false;
  m_requested = 0;
  m_alCode = m_alHeld ? m_alCode : std::uint16_t{0};
}

void SlaveUnit::setAlError(std::uint8_t state, std::uint16_t code) {
  m_alHeld = code != 0;
  m_wait = 0;
  if (code != 0) {
    m_alCode = code;
    fallTo(state);
  }
}

void SlaveUnit::setPowered(bool powered) {
  m_powered = powered;
  if (powered) {
    m_state = STATE_INIT;
    m_open = false;
    m_written = nullptr;
    m_lastOutputs.clear();
    m_carried.clear();
    halt();
    m_alCode = 0;
    m_alHeld = false;
    m_refused = false;
    m_requested = 0;
    m_wait = 0;
    m_registers.clear();
    m_dictionary.restore(m_identity.objects);
    m_pdos.restore();
    if (m_drive != nullptr) {
      m_drive->powerUp();
    }
  }
}

bool SlaveUnit::stepDrive() {
  if (!m_powered) {
    return false;
  }
  const bool fresh = m_written != nullptr && m_written->processData().takeObjects(*this);
  m_drive->step(m_state == STATE_OP, fresh);
  const bool expired = m_drive->watchdogExpired();
  if (expired) {
    m_alCode = WATCHDOG_CODE;
    fallTo(STATE_SAFEOP);
  }
  return expired;
}

void SlaveUnit::fallTo(std::uint8_t state) {
  m_wait = 0;
  // The numbers of the states are single bits: the highest one within the limit is the state to fall to.
  while (m_state > std::max(state, STATE_INIT)) {
    m_state = static_cast<std::uint8_t>(m_state >> 1U);
  }
  m_open = m_open && m_state >= STATE_SAFEOP;
}

void SlaveUnit::enter(std::uint8_t state) {
  m_state = state;
  m_restart = false;
  if (state == STATE_SAFEOP) {
    writeProcessData();
  }
}

void SlaveUnit::writeProcessData() {
  if (!m_open || m_written != m_attached) {
    m_open = true;
    m_written = m_attached;
    m_written->processData().bind(*this);
  }
}

void SlaveUnit::settle() {
  halt();
  m_open = false;
  m_state = std::min(STATE_PREOP, m_maximumState);
  m_requested = 0;
  m_restart = false;
  m_refused = false;
  m_busy = false;
  m_wait = 0;
  m_alCode = m_alHeld ? m_alCode : std::uint16_t{0};
}

void SlaveUnit::setMaximumState(std::uint8_t state) {
  m_maximumState = std::max(state, STATE_INIT);
  m_refused = false;
  fallTo(m_maximumState);
}

void SlaveUnit::forgetConfiguration() {
  if (m_written != nullptr) {
    m_carried.clear();
    m_lastOutputs = m_written->processData().outputs();
    m_written->describeFmmus(m_carried);
  }
  m_attached = nullptr;
  m_written = nullptr;
}

void SlaveUnit::resume() {
  if (!m_open || m_written != nullptr) {
    return;
  }
  std::vector<FmmuPlace> wanted;
  m_attached->describeFmmus(wanted);
  if (wanted == m_carried) {
    m_written = m_attached;
    m_written->processData().bind(*this);
  }
}

std::vector<std::uint8_t> SlaveUnit::outputs() const {
  return m_written == nullptr ? m_lastOutputs : m_written->processData().outputs();
}

} // namespace ethercat_simulation
