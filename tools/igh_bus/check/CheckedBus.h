// What the steps of a check work on.
#ifndef IGH_BUS_CHECK_CHECKED_BUS_H
#define IGH_BUS_CHECK_CHECKED_BUS_H

#include "bus/Survey.h"
#include "host/RealTime.h"

namespace igh_bus::check {

struct CheckOptions : RunOptions {
  bool yes = false; // no question before the bus is taken
  bool linePull = false;
  bool json = false;
  std::string commandLine;
  std::string reportFile;             // empty: none
  std::optional<double> climbSeconds; // longest time to OP; by the number of slaves without it
  std::optional<double> clockBoundNs; // a tenth of the period without it
  std::uint64_t clockCycles = 30000;  // within which the master must have met the reference clock
  double lineSeconds = 60;            // for a hand at the line
};

struct CheckedBus {
  // Asks every slave for its mailbox: to be called while the master is not active.
  CheckedBus(const CheckOptions& theOptions, const std::vector<FoundSlave>& theSlaves, RealTime& theRealTime);

  const CheckOptions& options;
  const std::vector<FoundSlave>& slaves;
  RealTime& realTime;
  std::vector<EntryAddress> inputs;       // all that can be read by name
  std::vector<std::uint16_t> withObjects; // described slaves whose mailbox serves objects
  std::vector<std::uint16_t> withClocks;  // slaves whose clocks the library uses

  std::string name(std::size_t slave) const; // "slave 5 (EM500 servo drive X)"
  std::uint64_t cyclesOf(double seconds) const;
  double clockBoundNs() const;
};

} // namespace igh_bus::check

#endif
