// The climb of a slave's AL state in time, as it goes on the real master.
#include "slave/SlaveConfiguration.h"

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

std::uint8_t SlaveUnit::target() const {
  return m_requested != 0 ? m_requested : m_attached != nullptr && m_asked ? STATE_OP : STATE_PREOP;
}

SlaveUnit::Course SlaveUnit::nextCourse() const {
  if (hasError()) {
    return Course::none;
  }
  if (m_alCode != 0) {
    return Course::recover;
  }
  const bool climbs = target() >= STATE_SAFEOP && target() != STATE_BOOT;
  if (climbs && (m_restart || m_state != target())) {
    return Course::climb;
  }
  return m_state == target() ? Course::none : Course::change;
}

void SlaveUnit::begin(Moment now) {
  m_course = nextCourse();
  m_stage = 0;
  m_due = now + (m_course == Course::climb     ? TO_BUSY
                 : m_course == Course::recover ? RECOVERY
                 : m_requested != 0            ? REQUESTED_CHANGE
                                               : FIRST_CHANGE);
}

bool SlaveUnit::advance(Moment now) {
  while (m_course != Course::none && now >= m_due) {
    takeStage();
  }
  return m_course != Course::none;
}

void SlaveUnit::halt() {
  m_course = Course::none;
  m_busy = false;
  m_missed = false;
}

void SlaveUnit::takeStage() {
  if (m_course == Course::climb) {
    takeClimbStage();
    return;
  }
  if (m_course == Course::change) {
    m_restart = false;
    go(target());
  } else if (m_alHeld) {
    m_refused = true; // acknowledged, asked for the old state again: the trouble lasts
  } else {
    m_alCode = 0;
    if (m_state == STATE_SAFEOP && target() == STATE_OP) {
      go(STATE_OP);
    }
  }
  halt();
}

void SlaveUnit::takeClimbStage() {
  bool goesOn = true;
  switch (m_stage++) {
  case 0:
    m_busy = true;
    m_due += TO_INIT;
    break;
  case 1:
    m_open = false;
    goesOn = go(STATE_INIT);
    m_due += TO_PREOP;
    break;
  case 2:
    goesOn = go(STATE_PREOP);
    m_due += Moment{m_identity.configurationUs} * MICROSECOND;
    break;
  case 3:
    if (m_attached != nullptr) {
      writeProcessData();
    }
    m_due += TO_SAFEOP;
    break;
  case 4:
    goesOn = go(STATE_SAFEOP) && target() > STATE_SAFEOP;
    m_due += TO_OP;
    break;
  default:
    go(STATE_OP);
    goesOn = false;
  }
  if (!goesOn) {
    halt();
  }
}

} // namespace ethercat_simulation
