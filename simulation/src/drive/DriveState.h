// The power state machine of a CiA 402 drive: controlword in, state and its bits of the statusword out.
#ifndef ETHERCAT_SIMULATION_DRIVE_STATE_H
#define ETHERCAT_SIMULATION_DRIVE_STATE_H

#include <cstdint>

namespace ethercat_simulation {

enum class PowerState : std::uint8_t {
  notReady,
  switchOnDisabled,
  readyToSwitchOn,
  switchedOn,
  operationEnabled,
  quickStopActive,
  faultReaction,
  fault,
};

class DriveState {
public:
  // One cycle. `standstill` ends a quick stop and a fault reaction; `stopOption` is object 0x605A; a fault is
  // reset only when `healed`.
  void step(std::uint16_t controlword, std::int16_t stopOption, bool standstill, bool healed);
  // Something failed: a drive with power brakes first.
  void fail();
  // The bus has left OP: without power to lose, the drive just switches off.
  void switchOff();
  void powerUp() { *this = DriveState(); }

  PowerState state() const { return m_state; }
  bool is(PowerState state) const { return m_state == state; }
  bool moves() const { return m_state == PowerState::operationEnabled; }
  bool brakes() const {
    return m_state == PowerState::quickStopActive || m_state == PowerState::faultReaction;
  }
  bool hasFailed() const { return m_state == PowerState::faultReaction || m_state == PowerState::fault; }
  std::uint16_t statusBits() const;

private:
  PowerState next(std::uint16_t controlword, std::int16_t stopOption, bool standstill) const;
  PowerState afterQuickStop(std::uint16_t controlword, std::int16_t stopOption, bool standstill) const;

  PowerState m_state = PowerState::notReady;
  bool m_resetBit = false;  // of the last controlword
  bool m_resetEdge = false; // of this one, when it counts
};

} // namespace ethercat_simulation

#endif
