#include "slave/AlState.h"

#include <algorithm>

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t REFUSAL_CODE = 0x0011; // invalid requested state change

bool isState(std::uint8_t state) {
  return state == STATE_INIT || state == STATE_PREOP || state == STATE_BOOT || state == STATE_SAFEOP ||
         state == STATE_OP;
}

} // namespace

std::uint16_t AlState::code() const {
  return m_code == 0 && m_refused ? REFUSAL_CODE : m_code;
}

std::uint8_t AlState::target() const {
  return m_requested != 0 ? m_requested : m_link.attached() != nullptr && m_asked ? STATE_OP : STATE_PREOP;
}

std::uint8_t AlState::next() const {
  if (m_restart && m_link.attached() != nullptr) {
    return STATE_INIT;
  }
  if (m_requested != 0) {
    return stepTowards(m_requested);
  }
  if (m_link.attached() == nullptr || !m_asked) {
    return STATE_PREOP;
  }
  switch (m_value) {
  case STATE_INIT:
    return STATE_PREOP;
  case STATE_PREOP:
    return STATE_SAFEOP;
  default:
    return STATE_OP;
  }
}

// Down in one go, up one state at a time; BOOT is reached from INIT only and left to it only.
std::uint8_t AlState::stepTowards(std::uint8_t state) const {
  const bool boot = m_value == STATE_BOOT || state == STATE_BOOT;
  if (!isState(state) || (state <= m_value && !boot)) {
    return state;
  }
  switch (m_value) {
  case STATE_INIT:
    return state == STATE_BOOT ? STATE_BOOT : STATE_PREOP;
  case STATE_PREOP:
    return boot ? STATE_INIT : STATE_SAFEOP;
  default:
    return state == m_value ? state : boot ? STATE_INIT : STATE_OP;
  }
}

bool AlState::go(std::uint8_t state) {
  m_refused = !accepts(state);
  if (m_refused) {
    if (state == STATE_SAFEOP) {
      m_link.close();
    }
    return false;
  }
  m_value = state;
  m_restart = false;
  if (state == STATE_SAFEOP) {
    m_link.write();
  }
  return true;
}

bool AlState::accepts(std::uint8_t state) {
  const bool needsConfiguration = state >= STATE_SAFEOP && m_link.attached() == nullptr;
  if (state > m_maximum || !isState(state) || needsConfiguration) {
    return false;
  }
  // The code stays until the next request or climb: nobody asks a slave again that has refused.
  m_code = m_value == STATE_PREOP && state == STATE_SAFEOP ? m_link.configure() : std::uint16_t{0};
  return m_code == 0;
}

void AlState::acknowledge() {
  m_refused = m_held;
  forgetCode();
}

void AlState::request(std::uint8_t state) {
  m_requested = state;
  m_faulty = false;
  m_refused = false;
  forgetCode();
}

void AlState::restart() {
  m_restart = true;
  m_refused = false;
  m_requested = 0;
  forgetCode();
}

void AlState::settle() {
  m_link.close();
  m_value = std::min(STATE_PREOP, m_maximum);
  m_requested = 0;
  m_restart = false;
  m_refused = false;
  forgetCode();
}

void AlState::powerUp() {
  m_value = STATE_INIT;
  m_code = 0;
  m_held = false;
  m_refused = false;
  m_requested = 0;
}

void AlState::setMaximum(std::uint8_t state) {
  m_maximum = std::max(state, STATE_INIT);
  m_refused = false;
  fallTo(m_maximum);
}

void AlState::setError(std::uint8_t state, std::uint16_t code) {
  m_held = code != 0;
  if (m_held) {
    fail(state, code);
  }
}

void AlState::fail(std::uint8_t state, std::uint16_t code) {
  m_code = code;
  fallTo(state);
}

void AlState::fallTo(std::uint8_t state) {
  // The numbers of the states are single bits: the highest one within the limit is the state to fall to.
  while (m_value > std::max(state, STATE_INIT)) {
    m_value = static_cast<std::uint8_t>(m_value >> 1U);
  }
  if (m_value < STATE_SAFEOP) {
    m_link.close();
  }
}

} // namespace ethercat_simulation
