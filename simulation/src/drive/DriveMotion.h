// The axis behind a drive: position in counts, velocity in counts/s, torque in thousandths of the rated one.
// No load and no gravity; without power it coasts to rest against a friction of a tenth of the rated torque.
#ifndef ETHERCAT_SIMULATION_DRIVE_MOTION_H
#define ETHERCAT_SIMULATION_DRIVE_MOTION_H

#include <ethercat_simulation/Slave.h>

namespace ethercat_simulation {

struct MotionLimits {
  double velocity = 0;
  double torque = 0;
  bool hasRange = false; // of positions
  double lowest = 0;
  double highest = 0;
};

class DriveMotion {
public:
  DriveMotion(const DriveParameters& parameters, double position);

  void setLimits(const MotionLimits& limits) { m_limits = limits; }
  // Held where it stands, whatever the torque is.
  void setBlocked(bool blocked) { m_blocked = blocked; }
  // One cycle each.
  void followPosition(double target);
  void followVelocity(double target);
  void followTorque(double target);
  void hold() { followPosition(m_demand); }
  void brake(double deceleration); // as hard as the torque allows for 0
  void coast();
  // Forgets what was demanded: the demand is where the axis stands.
  void settle();
  void stop(); // power-up: at rest, at the same position

  double cycle() const { return m_cycle; } // s
  double position() const { return m_position; }
  double demand() const { return m_demand; }
  double velocity() const { return m_velocity; }
  double torque() const { return m_torque; }
  double followingError() const { return m_demand - m_position; }
  bool standstill() const { return m_velocity == 0; }
  // A limit kept the last cycle from what was demanded.
  bool limited() const { return m_limited; }

  // The position behind a 32-bit number that is nearest to `near`: positions wrap as they do on the bus.
  static double unwrap(std::int32_t number, double near);

private:
  void move(double velocity);

  double m_cycle;
  double m_share; // of a difference that the lag makes up for in one cycle
  double m_ratedAcceleration;
  MotionLimits m_limits;
  bool m_blocked = false;
  double m_position;
  double m_demand;
  double m_velocity = 0;
  double m_torque = 0;
  bool m_limited = false;
};

// The velocity from which a stop within `distance` is possible in whole cycles.
double stoppingVelocity(double distance, double deceleration, double cycle);

} // namespace ethercat_simulation

#endif
