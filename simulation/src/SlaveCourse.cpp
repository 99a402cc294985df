// The climb of a slave's AL state in time, as it goes on the real master.
#include "SlaveConfiguration.h"

namespace ethercat_simulation {

namespace {

// Stages of a climb, from its beginning and then each from the one before. What the slave spends in PREOP is
// its own.
constexpr Moment toBusy = 8 * millisecond;
constexpr Moment toInit = 24 * millisecond;
constexpr Moment toPreop = 20 * millisecond;
constexpr Moment toSafeop = 8 * millisecond; // from the FMMUs on: it answers a little before
constexpr Moment toOp = 18 * millisecond;

constexpr Moment requestedChange = 100 * millisecond;
constexpr Moment firstChange = 20 * millisecond; // of a slave that has been switched on
constexpr Moment recovery = 72 * millisecond;

} // namespace

std::uint8_t SlaveUnit::target() const {
  return m_requested != 0 ? m_requested : m_attached != nullptr && m_asked ? stateOp : statePreop;
}

SlaveUnit::Course SlaveUnit::nextCourse() const {
  if (hasError()) {
    return Course::none;
  }
  if (m_alCode != 0) {
    return Course::recover;
  }
  const bool climbs = target() >= stateSafeop && target() != stateBoot;
  if (climbs && (m_restart || m_state != target())) {
    return Course::climb;
  }
  return m_state == target() ? Course::none : Course::change;
}

void SlaveUnit::begin(Moment now) {
  m_course = nextCourse();
  m_stage = 0;
  m_due = now + (m_course == Course::climb     ? toBusy
                 : m_course == Course::recover ? recovery
                 : m_requested != 0            ? requestedChange
                                               : firstChange);
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
    if (m_state == stateSafeop && target() == stateOp) {
      go(stateOp);
    }
  }
  halt();
}

void SlaveUnit::takeClimbStage() {
  bool goesOn = true;
  switch (m_stage++) {
  case 0:
    m_busy = true;
    m_due += toInit;
    break;
  case 1:
    m_open = false;
    goesOn = go(stateInit);
    m_due += toPreop;
    break;
  case 2:
    goesOn = go(statePreop);
    m_due += Moment{m_identity.configurationUs} * microsecond;
    break;
  case 3:
    if (m_attached != nullptr) {
      writeProcessData();
    }
    m_due += toSafeop;
    break;
  case 4:
    goesOn = go(stateSafeop) && target() > stateSafeop;
    m_due += toOp;
    break;
  default:
    go(stateOp);
    goesOn = false;
  }
  if (!goesOn) {
    halt();
  }
}

} // namespace ethercat_simulation
