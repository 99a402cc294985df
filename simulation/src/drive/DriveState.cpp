#include "drive/DriveState.h"

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t SWITCH_ON_BIT = 0x01;
constexpr std::uint16_t VOLTAGE_BIT = 0x02;
constexpr std::uint16_t NO_QUICK_STOP_BIT = 0x04;
constexpr std::uint16_t ENABLE_BIT = 0x08;
constexpr std::uint16_t RESET_BIT = 0x80;

constexpr std::int16_t COAST_OPTION = 0;      // of a quick stop: power off at once
constexpr std::int16_t FIRST_HOLD_OPTION = 5; // from here on the drive stays in quick stop active

} // namespace

void DriveState::step(std::uint16_t controlword, std::int16_t stopOption, bool standstill, bool healed) {
  const bool reset = (controlword & RESET_BIT) != 0;
  m_resetEdge = reset && !m_resetBit && healed;
  m_resetBit = reset;
  m_state = next(controlword, stopOption, standstill);
}

PowerState DriveState::next(std::uint16_t controlword, std::int16_t stopOption, bool standstill) const {
  const bool voltage = (controlword & VOLTAGE_BIT) != 0;
  const bool quickStop = voltage && (controlword & NO_QUICK_STOP_BIT) == 0;
  const bool switchOn = (controlword & SWITCH_ON_BIT) != 0;
  const bool enable = (controlword & ENABLE_BIT) != 0;
  const bool off = !voltage || quickStop;
  switch (m_state) {
  case PowerState::notReady:
    return PowerState::switchOnDisabled;
  case PowerState::switchOnDisabled:
    return off || switchOn ? m_state : PowerState::readyToSwitchOn;
  case PowerState::readyToSwitchOn:
    return off ? PowerState::switchOnDisabled : switchOn ? PowerState::switchedOn : m_state;
  case PowerState::switchedOn:
    return off         ? PowerState::switchOnDisabled
           : !switchOn ? PowerState::readyToSwitchOn
           : enable    ? PowerState::operationEnabled
                       : m_state;
  case PowerState::operationEnabled:
    if (quickStop && stopOption != COAST_OPTION) {
      return PowerState::quickStopActive;
    }
    return off         ? PowerState::switchOnDisabled
           : !switchOn ? PowerState::readyToSwitchOn
           : !enable   ? PowerState::switchedOn
                       : m_state;
  case PowerState::quickStopActive:
    return afterQuickStop(controlword, stopOption, standstill);
  case PowerState::faultReaction:
    return standstill ? PowerState::fault : m_state;
  case PowerState::fault:
    break;
  }
  return m_resetEdge ? PowerState::switchOnDisabled : m_state;
}

PowerState DriveState::afterQuickStop(std::uint16_t controlword, std::int16_t stopOption,
                                      bool standstill) const {
  constexpr std::uint16_t OPERATION = SWITCH_ON_BIT | VOLTAGE_BIT | NO_QUICK_STOP_BIT | ENABLE_BIT;
  if ((controlword & VOLTAGE_BIT) == 0) {
    return PowerState::switchOnDisabled;
  }
  if (stopOption >= FIRST_HOLD_OPTION) {
    return (controlword & OPERATION) == OPERATION ? PowerState::operationEnabled : m_state;
  }
  return standstill ? PowerState::switchOnDisabled : m_state;
}

void DriveState::fail() {
  if (!hasFailed()) {
    m_state = moves() || brakes() ? PowerState::faultReaction : PowerState::fault;
  }
}

void DriveState::switchOff() {
  if (m_state == PowerState::readyToSwitchOn || m_state == PowerState::switchedOn) {
    m_state = PowerState::switchOnDisabled;
  }
}

std::uint16_t DriveState::statusBits() const {
  switch (m_state) {
  case PowerState::notReady:
    return 0x0000;
  case PowerState::switchOnDisabled:
    return 0x0040;
  case PowerState::readyToSwitchOn:
    return 0x0021;
  case PowerState::switchedOn:
    return 0x0023;
  case PowerState::operationEnabled:
    return 0x0027;
  case PowerState::quickStopActive:
    return 0x0007;
  case PowerState::faultReaction:
    return 0x000F;
  case PowerState::fault:
    break;
  }
  return 0x0008;
}

} // namespace ethercat_simulation
