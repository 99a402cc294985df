// What can go wrong with a transfer, and the lines of a fault schedule.
#ifndef ETHERCAT_SIMULATION_FAULT_H
#define ETHERCAT_SIMULATION_FAULT_H

#include <ethercat_simulation/Drive.h>

#include <cstdint>

#pragma GCC visibility push(default)

namespace ethercat_simulation {

// What becomes of the transfers of one object; for complete access the lowest subindex of the object tells.
enum class SdoFault {
  none,
  abort,
  timeOut,     // no answer: ERROR after ten times the cycles of a transfer
  shortAnswer, // reads give one byte less than the object has
  longAnswer,  // reads give one byte more
  busyForEver, // holds up the later requests of the slave as well
};

enum class FaultKind {
  lostFrame,    // of each cycle
  lateFrame,    // of each cycle
  silentSlave,  // its share of the working counter is missing
  linkDown,     // at the master
  wireBreak,    // behind the slave
  powerOff,     // of the slave, and on again
  alError,      // the slave falls back
  sdoAbort,     // of one object
  sdoSilence,   // of one object
  errorCounter, // counts up by one in each cycle
  clockStep,    // of the reference clock, once
  driveTrouble, // of a drive
};

// One line of a fault schedule. Cycles are sends since activation, the first is 1. Exactly one of `at`,
// `every` and `probability` is not 0. A fault that lasts does not begin anew.
struct Fault {
  FaultKind kind = FaultKind::lostFrame;
  std::uint64_t at = 0;
  std::uint64_t every = 0;
  double probability = 0; // of each cycle
  std::uint32_t duration = 1;
  unsigned int slave = 0; // position
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  std::uint8_t alState = 4;
  std::uint16_t alCode = 0x001B;
  std::uint16_t counter = 0x0300; // register, 0x0300 to 0x0313
  std::int64_t stepNs = 0;
  DriveTrouble trouble = DriveTrouble::fault;
  std::uint16_t errorCode = 0x2310; // of the trouble `fault`, as 0x603F shows it: overcurrent
  // Outlives a deactivation: its cycles are counted from the first activation on, and go on with the next
  // one.
  bool acrossActivations = false;
};

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
