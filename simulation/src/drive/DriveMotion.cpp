#include "drive/DriveMotion.h"

#include <algorithm>
#include <cmath>

namespace ethercat_simulation {

namespace {

constexpr double PER_SECOND = 1e-6; // of microseconds
constexpr double RATED_TORQUE = 1000;
constexpr double FRICTION = 0.1; // of the rated torque

} // namespace

double stoppingVelocity(double distance, double deceleration, double cycle) {
  const double step = deceleration * cycle; // change of velocity in a cycle
  return step * (std::sqrt(0.25 + 2 * std::fabs(distance) / (step * cycle)) - 0.5);
}

DriveMotion::DriveMotion(const DriveParameters& parameters, double position)
    : m_cycle(std::max(parameters.cycleUs, 1U) * PER_SECOND),
      m_share(parameters.lagUs == 0 ? 1.0 : 1 - std::exp(-m_cycle / (parameters.lagUs * PER_SECOND))),
      m_ratedAcceleration(std::max(parameters.ratedAcceleration, 1.0)), m_position(position),
      m_demand(position) {}

double DriveMotion::unwrap(std::int32_t number, double near) {
  const auto base = static_cast<std::int64_t>(std::floor(near));
  const auto distance =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(number) - static_cast<std::uint32_t>(base));
  return static_cast<double>(base + distance);
}

void DriveMotion::settle() {
  m_demand = m_position;
  m_limited = false;
}

void DriveMotion::stop() {
  m_velocity = 0;
  m_torque = 0;
  settle();
}

void DriveMotion::move(double velocity) {
  const double reach = m_ratedAcceleration * m_limits.torque / RATED_TORQUE * m_cycle;
  const double slow = std::clamp(velocity, -m_limits.velocity, m_limits.velocity);
  const double before = m_velocity;
  m_velocity = std::clamp(slow, before - reach, before + reach);
  m_limited = m_limited || m_velocity != velocity;
  m_torque = (m_velocity - before) / m_cycle / m_ratedAcceleration * RATED_TORQUE;
  if (m_blocked) {
    m_velocity = 0;
  }
  m_position += m_velocity * m_cycle;
}

void DriveMotion::followPosition(double target) {
  const double before = m_demand;
  m_demand = m_limits.hasRange ? std::clamp(target, m_limits.lowest, m_limits.highest) : target;
  m_limited = m_demand != target;
  // Closes in on the demand no faster than it can brake again, or it would swing around it.
  const double demanded = (m_demand - before) / m_cycle;
  const double wanted = followingError() * m_share / m_cycle;
  const double braking = std::max(m_ratedAcceleration * m_limits.torque / RATED_TORQUE, 1.0);
  const double fastest = stoppingVelocity(followingError(), braking, m_cycle);
  move(demanded + std::clamp(wanted - demanded, -fastest, fastest));
  // A first-order lag never arrives; counts are whole.
  if (!m_blocked && m_demand == before && std::fabs(followingError()) < 0.5 &&
      std::fabs(m_velocity) * m_cycle < 0.5) {
    m_position = m_demand;
    m_velocity = 0;
  }
}

void DriveMotion::followVelocity(double target) {
  m_limited = false;
  const double difference = target - m_velocity;
  move(std::fabs(difference) < 0.5 ? target : m_velocity + difference * m_share);
  m_demand = m_position;
}

void DriveMotion::followTorque(double target) {
  const double allowed = std::clamp(target, -m_limits.torque, m_limits.torque);
  const double torque = m_torque + (allowed - m_torque) * m_share;
  m_limited = allowed != target;
  move(m_velocity + torque / RATED_TORQUE * m_ratedAcceleration * m_cycle);
  m_torque = torque; // also against the limit of the velocity
  m_demand = m_position;
}

void DriveMotion::brake(double deceleration) {
  const double hardest = m_ratedAcceleration * m_limits.torque / RATED_TORQUE;
  if (hardest <= 0) {
    coast(); // no torque to brake with
    return;
  }
  const double step = (deceleration > 0 ? deceleration : hardest) * m_cycle;
  m_limited = false;
  move(std::fabs(m_velocity) <= step ? 0.0 : m_velocity - std::copysign(step, m_velocity));
  m_demand = m_position;
}

void DriveMotion::coast() {
  const double step = m_ratedAcceleration * FRICTION * m_cycle;
  m_velocity =
      m_blocked || std::fabs(m_velocity) <= step ? 0.0 : m_velocity - std::copysign(step, m_velocity);
  m_position += m_velocity * m_cycle;
  m_torque = 0;
  settle();
}

} // namespace ethercat_simulation
