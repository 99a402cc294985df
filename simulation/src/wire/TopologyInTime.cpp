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
  if (!m_seenLink) {
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
  } else if (!m_scanning && m_states != 0 && now - m_silentSince >= lap() + TO_GIVE_UP) {
    dropList();
    m_rescan = true;
    m_noticeAt = now;
    m_responding = 0;
    m_states = 0;
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

void Topology::look(Moment now) {
  m_lookedAt = now;
  m_lookBy = 0;
  broadcast();
}

void Topology::lookIfDue(Moment now) {
  const Moment pause = m_turn == nullptr ? lap() : m_list.size() > 1 ? LONGEST_TURN : ONE_STEP;
  const bool early = m_lookBy != 0 && now >= m_lookBy;
  if (!m_rescan && (early || now - m_lookedAt >= pause)) {
    look(now);
  }
}

void Topology::moveSlaves(Moment now) {
  if (m_settled) {
    return;
  }
  const bool climbing = m_turn != nullptr;
  bool working = false;
  for (SlaveUnit* unit : m_list) {
    if (!unit->underWay()) {
      const bool waits = unit->takesTurn() && m_turn != nullptr;
      if (!unit->hasCourse()) {
        continue;
      }
      working = true;
      if (waits) {
        continue;
      }
      m_turn = unit->takesTurn() ? unit : m_turn;
      unit->begin(now);
    }
    working = true;
    if (!unit->advance(now) && m_turn == unit) {
      m_turn = nullptr;
    }
  }
  m_settled = !working;
  if (climbing && m_turn == nullptr) {
    m_lookBy = now + ONE_STEP;
  }
}

// After a start on slaves that the application has just left, these still are in OP, and exchange.
bool Topology::settlePending(Moment now) {
  if (m_settleAt == 0) {
    return false;
  }
  if (now < m_settleAt) {
    return true;
  }
  m_settleAt = 0;
  for (SlaveUnit* unit : m_list) {
    unit->settle();
  }
  look(now);
  wake();
  return false;
}

void Topology::catchUp() {
  if (m_inTime && m_drive != Drive::running && m_link) {
    const Moment now = m_time.now();
    settlePending(now);
    moveSlaves(now);
  }
}

bool Topology::anyAnswers() {
  if (!m_answersKnown) {
    m_answersKnown = true;
    m_answers = false;
    for (std::size_t i = 0; i < m_reached && !m_answers; ++i) {
      m_answers = m_wire[i]->responding();
    }
  }
  return m_answers;
}

} // namespace ethercat_simulation
