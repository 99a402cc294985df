// The steps of a check. Each judges its line, or throws Failure, which makes the line a failed one.
#ifndef IGH_BUS_CHECK_STEPS_H
#define IGH_BUS_CHECK_STEPS_H

#include "check/Bench.h"
#include "check/Line.h"

#include <array>
#include <map>

namespace igh_bus::check {

// On a master that is not active.

// By library and by master.
void checkScan(const CheckedBus& bus, Line& line);

// Error counters of each slave, as they stood when they were last looked at.
using Counters = std::map<std::uint16_t, std::vector<std::uint8_t>>;
// Reads registers of every slave, and clears its error counters.
void checkRegisters(const CheckedBus& bus, Counters& counters, Line& line);
// What the slaves have counted since.
void checkCounters(const CheckedBus& bus, const Counters& before, Line& line);

// On an active one.

void checkClimb(const CheckedBus& bus, Bench& bench, Line& line);
void checkExchange(const CheckedBus& bus, Bench& bench, Line& line);
void checkWorkingCounter(const CheckedBus& bus, Bench& bench, Line& line);
void checkReactivation(const CheckedBus& bus, Bench& bench, Line& line);
void checkLeading(const CheckedBus& bus, Bench& bench, Line& line);
// On a bench that follows.
void checkFollowing(const CheckedBus& bus, Bench& bench, Line& line);
void checkLinePull(const CheckedBus& bus, Bench& bench, Line& line);

// The object 0x1018 of every slave that serves objects, by requests of the library.
class IdentityCheck {
public:
  explicit IdentityCheck(const CheckedBus& bus) : m_bus(bus) {}
  void createRequests(); // before the activation
  void check(Bench& bench, Line& line);

private:
  static constexpr std::size_t PARTS = 4; // subindices 1 to 4
  using Parts = std::array<std::uint32_t, PARTS>;
  // Nothing when it was not done in time.
  std::optional<double> read(Bench& bench, std::uint32_t request) const;
  void compare(Bench& bench, std::uint16_t slave, const Parts& requests, Line& line);

  const CheckedBus& m_bus;
  std::vector<Parts> m_requests; // in the order of withObjects
  std::size_t m_wrong = 0;
};

} // namespace igh_bus::check

#endif
