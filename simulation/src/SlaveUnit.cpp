#include "SlaveUnit.h"

#include "SlaveConfiguration.h"

#include <algorithm>

namespace ethercat_simulation {

std::uint8_t SlaveUnit::wantedState() const {
  if (m_attached == nullptr) {
    return statePreop;
  }
  if (m_restart) {
    return stateInit;
  }
  switch (m_state) {
  case stateInit:
    return statePreop;
  case statePreop:
    return stateSafeop;
  default:
    return stateOp;
  }
}

bool SlaveUnit::step(unsigned int climbCycles, unsigned int stagger) {
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
  if (wanted > m_maximumState) {
    m_refused = true;
  } else {
    enter(wanted);
  }
  m_busy = !m_refused && wantedState() != m_state;
  return true;
}

void SlaveUnit::enter(std::uint8_t state) {
  m_state = state;
  m_restart = false;
  if (state == stateSafeop) {
    m_written = m_attached;
    m_written->bindProcessData(this);
  }
}

void SlaveUnit::settle() {
  m_state = std::min(statePreop, m_maximumState);
  m_restart = false;
  m_refused = false;
  m_busy = false;
  m_wait = 0;
}

void SlaveUnit::setMaximumState(std::uint8_t state) {
  m_maximumState = std::max(state, stateInit);
  m_refused = false;
  m_wait = 0;
  // The numbers of the states are single bits: the highest one within the limit is the state to fall to.
  while (m_state > m_maximumState) {
    m_state = static_cast<std::uint8_t>(m_state >> 1U);
  }
}

void SlaveUnit::forgetConfiguration() {
  m_attached = nullptr;
  m_written = nullptr;
}

std::vector<std::uint8_t> SlaveUnit::outputs() const {
  return m_written == nullptr ? std::vector<std::uint8_t>() : m_written->outputs();
}

} // namespace ethercat_simulation
