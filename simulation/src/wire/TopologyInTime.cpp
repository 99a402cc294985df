// The state machine of the running master in time, as the real one works: one slave after the other, and a
// look at all of them now and then, so that what the application sees is always a little behind.
#include "wire/Topology.h"

namespace ethercat_simulation {

namespace {

constexpr Moment ONE_STEP = 8 * MILLISECOND;          // of the state machine
constexpr Moment LONGEST_TURN = 348 * MILLISECOND;    // between two looks while slaves climb
constexpr Moment TO_GIVE_UP = 12 * MILLISECOND;       // frames that do not come back
constexpr Moment TO_FORGET_STATES = 17 * MILLISECOND; // after the link has gone

} // namespace

// One look at each slave.
Moment Topology::lap() const {
  return static_cast<Moment>(m_list.size() + 1) * ONE_STEP;
}

void Topology::stepInTime(bool answered, Moment now) {
  if (!m_sight.up()) {
    loseLink(now);
    return;
  }
  if (!answered || !anyAnswers()) {
    loseFrames(now);
    return;
  }
  m_silentSince = 0;
  if (m_scanning) {
    if (m_scanEnd.ends(now)) {
      endScan();
      look(now);
    }
    return;
  }
  if (settlePending(now)) {
    return;
  }
  if (m_rescan && now >= m_noticeAt) {
    noticeChange(now);
    return;
  }
  moveSlaves(now);
  lookIfDue(now);
}

void Topology::loseLink(Moment now) {
  if (m_silentSince == 0) {
    m_silentSince = now;
  } else if (now - m_silentSince >= TO_FORGET_STATES && !m_rescan) {
    dropList();
    m_rescan = true;
    m_noticeAt = now;
    m_scanning = false;
    look(now);
  }
}

// A scan of nobody begins and ends in one step, so nobody sees it.
void Topology::loseFrames(Moment now) {
  if (m_silentSince == 0) {
    m_silentSince = now;
  } else if (!m_scanning && m_look.states() != 0 && now - m_silentSince >= lap() + TO_GIVE_UP) {
    dropList();
    m_rescan = true;
    m_noticeAt = now;
    m_look.forget();
  }
}

void Topology::noticeChange(Moment now) {
  if (m_lost != nullptr) {
    m_lost->setMissed();
    m_lost = nullptr;
    m_noticeAt = now + ONE_STEP;
    return;
  }
  look(now);
  startScan();
}

void Topology::lookIfDue(Moment now) {
  const Moment pause = !m_climb.isUnderWay() ? lap() : m_list.size() > 1 ? LONGEST_TURN : ONE_STEP;
  if (!m_rescan && m_look.isDue(now, pause)) {
    look(now);
  }
}

void Topology::moveSlaves(Moment now) {
  if (m_climb.move(m_list.slaves(), now)) {
    m_look.hurry(now + ONE_STEP);
  }
}

bool Topology::settlePending(Moment now) {
  const Climb::Settling settling = m_climb.settle(m_list.slaves(), now);
  if (settling == Climb::Settling::done) {
    look(now);
    wake();
  }
  return settling == Climb::Settling::pending;
}

void Topology::catchUp() {
  if (m_drive == Drive::nobody && m_rescan) {
    scanNow();
  }
  if (m_inTime && m_drive != Drive::running && m_line.link()) {
    const Moment now = m_time.now();
    settlePending(now);
    moveSlaves(now);
  }
}

bool Topology::anyAnswers() {
  if (!m_answersKnown) {
    m_answersKnown = true;
    m_answers = m_line.anyAnswers();
  }
  return m_answers;
}

} // namespace ethercat_simulation
