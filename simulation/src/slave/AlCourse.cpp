#include "slave/AlCourse.h"

namespace ethercat_simulation {

namespace {

// Stages of a climb, from its beginning and then each from the one before. What the slave spends in PREOP is
// its own.
constexpr Moment TO_BUSY = 8 * MILLISECOND;
constexpr Moment TO_INIT = 24 * MILLISECOND;
constexpr Moment TO_PREOP = 20 * MILLISECOND;
constexpr Moment TO_SAFEOP = 8 * MILLISECOND; // from the FMMUs on: it answers a little before
constexpr Moment TO_OP = 18 * MILLISECOND;

constexpr Moment REQUESTED_CHANGE = 100 * MILLISECOND;
constexpr Moment FIRST_CHANGE = 20 * MILLISECOND; // of a slave that has been switched on
constexpr Moment RECOVERY = 72 * MILLISECOND;

} // namespace

bool AlCourse::step(unsigned int climbCycles, unsigned int stagger) {
  if (m_state.isToAcknowledge() && !m_state.isRefused() && !acknowledge(climbCycles)) {
    return true;
  }
  const std::uint8_t wanted = m_state.next();
  if ((wanted == m_state.value() && !m_state.restarts()) || m_state.hasErrorFlag()) {
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
  m_state.go(wanted);
  if (m_state.value() < STATE_SAFEOP) {
    m_link.close();
  }
  m_busy = !m_state.isRefused() && m_state.next() != m_state.value();
  return true;
}

// Takes as long as a change of the state.
bool AlCourse::acknowledge(unsigned int climbCycles) {
  m_busy = true;
  m_wait = m_wait == 0 ? climbCycles : m_wait;
  if (--m_wait == 0) {
    m_state.acknowledge();
  }
  return m_wait == 0;
}

AlCourse::Kind AlCourse::next() const {
  if (m_state.hasErrorFlag()) {
    return Kind::none;
  }
  if (m_state.isToAcknowledge()) {
    return Kind::recover;
  }
  const std::uint8_t target = m_state.target();
  if (target >= STATE_SAFEOP && (m_state.restarts() || m_state.value() != target)) {
    return Kind::climb;
  }
  return m_state.value() == target ? Kind::none : Kind::change;
}

void AlCourse::begin(Moment now) {
  m_kind = next();
  m_stage = 0;
  m_due = now + (m_kind == Kind::climb     ? TO_BUSY
                 : m_kind == Kind::recover ? RECOVERY
                 : m_state.isRequested()   ? REQUESTED_CHANGE
                                           : FIRST_CHANGE);
}

bool AlCourse::advance(Moment now) {
  while (m_kind != Kind::none && now >= m_due) {
    takeStage();
  }
  return m_kind != Kind::none;
}

void AlCourse::halt() {
  m_kind = Kind::none;
  m_busy = false;
  m_state.setMissed(false);
}

void AlCourse::takeStage() {
  if (m_kind == Kind::climb) {
    takeClimbStage();
    return;
  }
  if (m_kind == Kind::change) {
    m_state.endRestart();
    m_state.go(m_state.target());
  } else {
    m_state.acknowledge();
    if (!m_state.isRefused() && m_state.value() == STATE_SAFEOP && m_state.target() == STATE_OP) {
      m_state.go(STATE_OP);
    }
  }
  halt();
}

void AlCourse::takeClimbStage() {
  bool goesOn = true;
  switch (m_stage++) {
  case 0:
    m_busy = true;
    m_due += TO_INIT;
    break;
  case 1:
    m_link.close();
    goesOn = m_state.go(STATE_INIT);
    m_due += TO_PREOP;
    break;
  case 2:
    goesOn = m_state.go(STATE_PREOP);
    m_due += m_configuration;
    break;
  case 3:
    if (m_link.attached() != nullptr) {
      m_link.write();
    }
    m_due += TO_SAFEOP;
    break;
  case 4:
    goesOn = m_state.go(STATE_SAFEOP) && m_state.target() > STATE_SAFEOP;
    m_due += TO_OP;
    break;
  default:
    m_state.go(STATE_OP);
    goesOn = false;
  }
  if (!goesOn) {
    halt();
  }
}

} // namespace ethercat_simulation
