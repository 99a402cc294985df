#include "wire/Climb.h"

namespace ethercat_simulation {

void Climb::count(const Slaves& slaves) {
  bool working = false;
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    // Slaves are not equally quick, so their states come one after the other.
    working = slaves[i]->step(m_cycles, static_cast<unsigned int>(i % m_cycles)) || working;
  }
  m_settled = !working;
}

bool Climb::move(const Slaves& slaves, Moment now) {
  if (m_settled) {
    return false;
  }
  const bool climbing = m_turn != nullptr;
  bool working = false;
  for (SlaveUnit* unit : slaves) {
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
  return climbing && m_turn == nullptr;
}

void Climb::settleAtOnce(const Slaves& slaves) const {
  for (SlaveUnit* unit : slaves) {
    unit->settle();
  }
}

void Climb::settleInTime(const Slaves& slaves, Moment now) {
  // It takes its time too, and the next activation may come before.
  constexpr Moment TO_PREOP = 140 * MILLISECOND;
  for (SlaveUnit* unit : slaves) {
    if (unit->state() >= STATE_SAFEOP) {
      m_settleAt = m_settleAt != 0 ? m_settleAt : now + TO_PREOP;
    } else {
      unit->settle();
    }
  }
}

Climb::Settling Climb::settle(const Slaves& slaves, Moment now) {
  if (m_settleAt == 0) {
    return Settling::none;
  }
  if (now < m_settleAt) {
    return Settling::pending;
  }
  m_settleAt = 0;
  settleAtOnce(slaves);
  return Settling::done;
}

} // namespace ethercat_simulation
