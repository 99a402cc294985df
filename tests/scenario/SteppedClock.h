// The clocks of the process stand still while one of these lives, and the test moves them on: minutes of bus
// time take seconds, and nothing depends on how punctual the machine is.
#pragma once

#include <cstdint>
#include <vector>

namespace scenario {

struct SteppedClock {
  SteppedClock();
  ~SteppedClock();
  SteppedClock(const SteppedClock&) = delete;
  SteppedClock& operator=(const SteppedClock&) = delete;

  static constexpr std::int64_t FROM_1970_TO_2000 = 946684800LL * 1000000000;
  std::int64_t now = FROM_1970_TO_2000 + 123456789; // ns since 1970, of every clock
  // An absolute sleep ends at once, at its time if that is not over yet.
  std::vector<std::int64_t> sleeps = {}; // from the moment of the call to the time asked for, ns
  unsigned int interruptions = 0;        // so many sleeps end halfway, with EINTR
  // What the master's calls of a phase take, ns.
  std::int64_t receiveTakes = 0;
  std::int64_t sdoStateTakes = 0;
  std::int64_t sendTakes = 0;
};

} // namespace scenario
