#include "drive/DriveProfile.h"

#include "drive/DriveMotion.h"

#include <algorithm>
#include <cmath>

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t NEW_SET_POINT_BIT = 0x10;
constexpr std::uint16_t IMMEDIATELY_BIT = 0x20;
constexpr std::uint16_t RELATIVE_BIT = 0x40;

} // namespace

void DriveProfile::start(double position, double velocity) {
  *this = DriveProfile();
  m_demand = position;
  m_goal = position;
  m_velocity = velocity;
}

void DriveProfile::drop(double position, double velocity) {
  const bool requested = m_requested;
  start(position, velocity);
  m_requested = requested;
}

void DriveProfile::command(std::uint16_t controlword, std::int32_t target) {
  const bool requested = (controlword & NEW_SET_POINT_BIT) != 0;
  if (requested && !m_requested) {
    const double base = m_hasNext ? m_next : m_goal;
    const double goal = (controlword & RELATIVE_BIT) != 0 ? base + target : DriveMotion::unwrap(target, base);
    const bool now = arrived() || (controlword & IMMEDIATELY_BIT) != 0;
    m_accepted = now || !m_hasNext;
    if (now) {
      m_goal = goal;
      m_hasNext = false;
    } else if (!m_hasNext) {
      m_next = goal;
      m_hasNext = true;
    }
  }
  m_requested = requested;
}

double DriveProfile::advance(const ProfileLimits& limits, bool halt, double cycle) {
  if (m_hasNext && m_demand == m_goal && m_velocity == 0) {
    m_goal = m_next;
    m_hasNext = false;
  }
  const double up = std::max(limits.acceleration, 1.0) * cycle;
  const double down = std::max(limits.deceleration, 1.0) * cycle;
  const double distance = m_goal - m_demand;
  const double stopping = stoppingVelocity(distance, down / cycle, cycle);
  const double wanted = halt ? 0 : std::copysign(std::min(limits.velocity, stopping), distance);
  const bool faster = std::fabs(wanted) > std::fabs(m_velocity) && wanted * m_velocity >= 0;
  const double step = faster ? up : down;
  m_velocity = std::clamp(wanted, m_velocity - step, m_velocity + step);
  m_demand += m_velocity * cycle;
  if (!halt && std::fabs(m_goal - m_demand) < 0.5 && std::fabs(m_velocity) <= 2 * down) {
    m_demand = m_goal;
    m_velocity = 0;
  }
  return m_demand;
}

} // namespace ethercat_simulation
