#include "drive/DriveModel.h"

#include <cmath>

namespace ethercat_simulation {

namespace {

constexpr std::int8_t PROFILE_POSITION = 1;
constexpr std::int8_t CYCLIC_POSITION = 8;
constexpr std::int8_t CYCLIC_VELOCITY = 9;
constexpr std::int8_t CYCLIC_TORQUE = 10;

constexpr std::uint16_t HALT_BIT = 0x0100; // of the controlword

constexpr std::uint16_t VOLTAGE_BIT = 0x0010; // of the statusword
constexpr std::uint16_t REMOTE_BIT = 0x0200;
constexpr std::uint16_t REACHED_BIT = 0x0400;
constexpr std::uint16_t LIMIT_BIT = 0x0800;
constexpr std::uint16_t FOLLOWS_BIT = 0x1000; // in profile position: set-point acknowledged
constexpr std::uint16_t BEHIND_BIT = 0x2000;

constexpr std::uint16_t COMMUNICATION_ERROR = 0x8100;
constexpr std::uint16_t FOLLOWING_ERROR_CODE = 0x8611;
constexpr std::uint32_t NO_WINDOW = 0xFFFFFFFF;

bool isMode(std::int8_t mode) {
  return mode == 0 || mode == PROFILE_POSITION || (mode >= CYCLIC_POSITION && mode <= CYCLIC_TORQUE);
}

template <class Number> Number wrapped(double value) {
  return static_cast<Number>(std::llround(value));
}

} // namespace

DriveModel::DriveModel(const ObjectBytes& bytes, const DriveParameters& parameters)
    : m_objects(bytes), m_history(bytes), m_motion(parameters, m_objects.position.get()),
      m_watchdogCycles(parameters.watchdogUs / std::max(parameters.cycleUs, 1U)) {}

void DriveModel::powerUp() {
  m_state.powerUp();
  m_motion.stop();
  m_wasOperational = false;
  m_armed = false;
  m_expired = false;
  m_moved = false;
  m_atSwitch = false;
}

void DriveModel::step(bool operational, bool fresh) {
  watch(operational, fresh);
  watchBus(operational);
  m_state.step(m_troubles.taken(m_objects.controlword.get()), m_objects.quickStopOption.get(),
               m_motion.standstill(), !m_troubles.has(DriveTrouble::fault));
  failAsToldTo();
  if (!m_state.hasFailed()) {
    m_objects.errorCode.set(0);
  }
  selectMode();
  loadLimits();
  move();
  report();
}

void DriveModel::watch(bool operational, bool fresh) {
  m_armed = operational && (m_armed || fresh);
  m_idleCycles = fresh || !m_armed ? 0 : m_idleCycles + 1;
  if (m_watchdogCycles != 0 && m_idleCycles >= m_watchdogCycles) {
    m_expired = true;
    m_armed = false;
  }
}

bool DriveModel::watchdogExpired() {
  const bool expired = m_expired;
  m_expired = false;
  return expired;
}

void DriveModel::watchBus(bool operational) {
  if (m_wasOperational && !operational) {
    if (m_state.moves() || m_state.brakes()) {
      fail(COMMUNICATION_ERROR);
    }
    m_state.switchOff();
    m_objects.controlword.set(0); // nobody commands any more
  }
  m_wasOperational = operational;
}

void DriveModel::fail(std::uint16_t code) {
  if (!m_state.hasFailed()) {
    m_state.fail();
    m_objects.errorCode.set(code);
    m_history.add(code);
  }
}

void DriveModel::failAsToldTo() {
  if (m_troubles.has(DriveTrouble::fault) && !m_state.is(PowerState::notReady)) {
    fail(m_troubles.errorCode());
  }
}

void DriveModel::selectMode() {
  const std::int8_t mode = m_objects.mode.get();
  if (isMode(mode) && mode != m_objects.modeDisplay.get()) {
    m_objects.modeDisplay.set(mode);
    m_motion.settle();
    m_profile.start(m_motion.position(), m_motion.velocity());
  }
}

void DriveModel::loadLimits() {
  MotionLimits limits;
  limits.velocity = m_objects.maximumVelocity.get();
  limits.torque = m_objects.maximumTorque.get();
  limits.lowest = m_objects.lowestPosition.get();
  limits.highest = m_objects.highestPosition.get();
  limits.hasRange = limits.lowest < limits.highest;
  m_motion.setLimits(limits);
  m_motion.setBlocked(m_troubles.has(DriveTrouble::blockedAxis));
}

void DriveModel::move() {
  if (m_state.moves()) {
    if (!m_moved) {
      m_motion.settle();
      m_profile.start(m_motion.position(), m_motion.velocity());
    }
    m_moved = true;
    m_atSwitch = m_troubles.forbids(direction()) || m_troubles.forbids(m_motion.velocity());
    if (m_atSwitch) {
      m_motion.brake(m_objects.quickStopDeceleration.get());
      m_profile.drop(m_motion.position(), m_motion.velocity());
    } else {
      follow();
    }
    checkFollowing();
    return;
  }
  m_moved = false;
  m_atSwitch = false;
  m_behindMs = 0;
  const std::int16_t option = m_objects.quickStopOption.get();
  const bool slowRamp = m_state.is(PowerState::quickStopActive) && (option == 1 || option == 5);
  const bool fullTorque =
      m_state.is(PowerState::quickStopActive) && (option == 3 || option == 4 || option >= 7);
  if (m_state.brakes() && !m_troubles.has(DriveTrouble::safeTorqueOff)) {
    m_motion.brake(slowRamp     ? m_objects.profileDeceleration.get()
                   : fullTorque ? 0.0
                                : m_objects.quickStopDeceleration.get());
  } else {
    m_motion.coast();
  }
}

void DriveModel::follow() {
  switch (m_objects.modeDisplay.get()) {
  case PROFILE_POSITION: {
    const std::uint16_t controlword = m_objects.controlword.get();
    const double velocity = std::min(m_objects.profileVelocity.get(), m_objects.maximumVelocity.get());
    const ProfileLimits limits{velocity, static_cast<double>(m_objects.profileAcceleration.get()),
                               static_cast<double>(m_objects.profileDeceleration.get())};
    m_profile.command(controlword, m_objects.targetPosition.get());
    m_motion.followPosition(m_profile.advance(limits, (controlword & HALT_BIT) != 0, m_motion.cycle()));
    break;
  }
  case CYCLIC_POSITION:
    m_motion.followPosition(DriveMotion::unwrap(m_objects.targetPosition.get(), m_motion.position()));
    break;
  case CYCLIC_VELOCITY:
    m_motion.followVelocity(m_objects.targetVelocity.get());
    break;
  case CYCLIC_TORQUE:
    m_motion.followTorque(m_objects.targetTorque.get());
    break;
  default:
    m_motion.hold();
  }
}

// Where the set-points lead: its sign.
double DriveModel::direction() const {
  switch (m_objects.modeDisplay.get()) {
  case PROFILE_POSITION:
    return m_profile.goal() - m_motion.position();
  case CYCLIC_POSITION:
    return DriveMotion::unwrap(m_objects.targetPosition.get(), m_motion.position()) - m_motion.position();
  case CYCLIC_VELOCITY:
    return m_objects.targetVelocity.get();
  case CYCLIC_TORQUE:
    return m_objects.targetTorque.get();
  default:
    return 0;
  }
}

void DriveModel::checkFollowing() {
  const std::uint32_t window = m_objects.followingWindow.get();
  if (window == NO_WINDOW || std::fabs(m_motion.followingError()) <= window) {
    m_behindMs = 0;
    return;
  }
  constexpr double MS_PER_SECOND = 1000;
  m_behindMs += m_motion.cycle() * MS_PER_SECOND;
  if (m_behindMs > m_objects.followingTimeout.get()) {
    fail(FOLLOWING_ERROR_CODE);
  }
}

void DriveModel::report() {
  m_objects.positionDemand.set(wrapped<std::int32_t>(m_motion.demand()));
  m_objects.position.set(wrapped<std::int32_t>(m_motion.position()));
  m_objects.velocity.set(wrapped<std::int32_t>(m_motion.velocity()));
  m_objects.torque.set(wrapped<std::int16_t>(std::clamp(m_motion.torque(), -32768.0, 32767.0)));
  m_objects.followingError.set(wrapped<std::int32_t>(m_motion.followingError()));
  m_objects.digitalInputs.set(m_troubles.digitalInputs());
  m_history.step(m_objects.errorCode.get());
  const bool powered = !m_troubles.has(DriveTrouble::safeTorqueOff);
  const std::uint16_t supply = m_state.is(PowerState::notReady) ? 0
                               : powered                        ? VOLTAGE_BIT | REMOTE_BIT
                                                                : REMOTE_BIT;
  m_objects.statusword.set(static_cast<std::uint16_t>(m_state.statusBits() | supply | modeBits()));
}

std::uint16_t DriveModel::modeBits() const {
  if (!m_state.moves()) {
    return 0;
  }
  const std::uint16_t common = static_cast<std::uint16_t>(
      (m_motion.limited() || m_atSwitch ? LIMIT_BIT : 0U) | (m_behindMs > 0 ? BEHIND_BIT : 0U));
  switch (m_objects.modeDisplay.get()) {
  case 0:
    return common;
  case PROFILE_POSITION: {
    const bool halted = (m_objects.controlword.get() & HALT_BIT) != 0;
    const bool near = std::fabs(m_profile.goal() - m_motion.position()) <= m_objects.positionWindow.get();
    const bool reached = halted ? m_motion.standstill() : m_profile.arrived() && near;
    return static_cast<std::uint16_t>(common | (reached ? REACHED_BIT : 0U) |
                                      (m_profile.acknowledges() ? FOLLOWS_BIT : 0U));
  }
  default:
    return static_cast<std::uint16_t>(common | (m_motion.limited() || m_atSwitch ? 0U : FOLLOWS_BIT));
  }
}

} // namespace ethercat_simulation
