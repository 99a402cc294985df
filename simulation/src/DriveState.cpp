#include "DriveState.h"

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t switchOnBit = 0x01;
constexpr std::uint16_t voltageBit = 0x02;
constexpr std::uint16_t noQuickStopBit = 0x04;
constexpr std::uint16_t enableBit = 0x08;
constexpr std::uint16_t resetBit = 0x80;

constexpr std::int16_t coastOption = 0;     // of a quick stop: power off at once
constexpr std::int16_t firstHoldOption = 5; // from here on the drive stays in quick stop active

} // namespace

void DriveState::step(std::uint16_t controlword, std::int16_t stopOption, bool standstill) {
  const bool reset = (controlword & resetBit) != 0;
  m_resetEdge = reset && !m_resetBit;
  m_resetBit = reset;
  m_state = next(controlword, stopOption, standstill);
}

PowerState DriveState::next(std::uint16_t controlword, std::int16_t stopOption, bool standstill) const {
  const bool voltage = (controlword & voltageBit) != 0;
  const bool quickStop = voltage && (controlword & noQuickStopBit) == 0;
  const bool switchOn = (controlword & switchOnBit) != 0;
  const bool enable = (controlword & enableBit) != 0;
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
    if (quickStop && stopOption != coastOption) {
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
  constexpr std::uint16_t operation = switchOnBit | voltageBit | noQuickStopBit | enableBit;
  if ((controlword & voltageBit) == 0) {
    return PowerState::switchOnDisabled;
  }
  if (stopOption >= firstHoldOption) {
    return (controlword & operation) == operation ? PowerState::operationEnabled : m_state;
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
