// A CiA 402 drive: what its objects ask for goes through the state machine and the axis, and back into them.
#ifndef ETHERCAT_SIMULATION_DRIVE_MODEL_H
#define ETHERCAT_SIMULATION_DRIVE_MODEL_H

#include "drive/DriveMotion.h"
#include "drive/DriveObjects.h"
#include "drive/DriveProfile.h"
#include "drive/DriveState.h"
#include "drive/DriveTroubles.h"
#include "drive/ErrorHistory.h"

namespace ethercat_simulation {

class DriveModel {
public:
  DriveModel(const ObjectBytes& bytes, const DriveParameters& parameters);

  // One cycle. `operational`: the slave is in OP; `fresh`: outputs have come with this cycle's frame.
  void step(bool operational, bool fresh);
  // The process data stayed away for the time of the watchdog, since the last call.
  bool watchdogExpired();
  // Switched off and on again. The encoder is an absolute one; the objects have their first values; what
  // troubles it from outside stays.
  void powerUp();
  DriveTroubles& troubles() { return m_troubles; }

private:
  void watch(bool operational, bool fresh);
  void watchBus(bool operational);
  void selectMode();
  void failAsToldTo();
  void loadLimits();
  void move();
  void follow();
  double direction() const;
  void checkFollowing();
  void fail(std::uint16_t code);
  void report();
  std::uint16_t modeBits() const;

  DriveObjects m_objects;
  ErrorHistory m_history;
  DriveTroubles m_troubles;
  DriveState m_state;
  DriveMotion m_motion;
  DriveProfile m_profile;
  std::uint32_t m_watchdogCycles;
  std::uint32_t m_idleCycles = 0; // in OP, since the last outputs
  bool m_armed = false;           // the watchdog starts with the first outputs
  bool m_expired = false;
  bool m_wasOperational = false;
  bool m_moved = false;    // in the last cycle
  bool m_atSwitch = false; // a limit switch holds the axis
  double m_behindMs = 0;   // how long the following error has been too large
};

} // namespace ethercat_simulation

#endif
