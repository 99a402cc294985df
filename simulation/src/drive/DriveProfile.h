// Profile position mode: the handshake of set-points and the ramps between them.
#ifndef ETHERCAT_SIMULATION_DRIVE_PROFILE_H
#define ETHERCAT_SIMULATION_DRIVE_PROFILE_H

#include <cstdint>

namespace ethercat_simulation {

struct ProfileLimits {
  double velocity;     // counts/s
  double acceleration; // counts/s^2
  double deceleration;
};

class DriveProfile {
public:
  // Stands at `position` from here on, without a set-point.
  void start(double position, double velocity);
  // The same while it is commanded: what has been asked for is dropped and needs a new edge.
  void drop(double position, double velocity);
  // Takes a set-point with the rising edge of its bit; one more waits until the axis has arrived.
  void command(std::uint16_t controlword, std::int32_t target);
  // The demand of the next cycle.
  double advance(const ProfileLimits& limits, bool halt, double cycle);

  double goal() const { return m_goal; }
  bool acknowledges() const { return (m_requested && m_accepted) || m_hasNext; }
  bool arrived() const { return m_demand == m_goal && m_velocity == 0 && !m_hasNext; }

private:
  double m_demand = 0;
  double m_velocity = 0;
  double m_goal = 0;
  double m_next = 0;
  bool m_hasNext = false;
  bool m_requested = false;
  bool m_accepted = false;
};

} // namespace ethercat_simulation

#endif
