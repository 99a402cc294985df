// What the error callback of the library counts; in the cycle, so it does nothing else.
#ifndef IGH_BUS_ERROR_COUNTS_H
#define IGH_BUS_ERROR_COUNTS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace igh_bus {

struct ErrorCounts {
  std::array<std::uint64_t, 6> total{};     // by error code
  std::array<std::uint64_t, 6> lastCycle{}; // the latest cycle that raised it
  std::array<std::uint64_t, 6> streak{};    // how many cycles in a row did, up to that one
  std::uint64_t cycle = 0;                  // the running cycle, kept by the loop

  void count(int code) {
    const auto place = static_cast<std::size_t>(code);
    if (code < 0 || place >= total.size())
      return;
    const bool first = total[place]++ == 0;
    if (first || lastCycle[place] + 1 < cycle)
      streak[place] = 1;
    else if (lastCycle[place] + 1 == cycle)
      ++streak[place];
    lastCycle[place] = cycle;
  }

  // True when the last `cycles` cycles of the loop, which has left the last one, all raised this error.
  bool lasting(int code, std::uint64_t cycles) const {
    const auto place = static_cast<std::size_t>(code);
    return total[place] != 0 && lastCycle[place] + 1 == cycle && streak[place] >= cycles;
  }
};

// An error code in words.
const char* errorText(int code);

} // namespace igh_bus

#endif
