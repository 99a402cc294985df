// What the error callback of the library counts; in the cycle, so it does nothing else.
#ifndef IGH_BUS_ERROR_COUNTS_H
#define IGH_BUS_ERROR_COUNTS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace igh_bus {

struct SlaveErrorCount {
  std::uint64_t count;
  std::uint64_t first; // cycles
  std::uint64_t last;
};

struct ErrorCounts {
  static constexpr std::size_t WHOLE_MASTER = 255; // the library drives slaves 0 to 254

  std::array<std::uint64_t, 6> total{};     // by error code
  std::array<std::uint64_t, 6> lastCycle{}; // the latest cycle that raised it
  std::array<std::uint64_t, 6> streak{};    // how many cycles in a row did, up to that one
  std::uint64_t cycle = 0;                  // the running cycle, kept by the loop

  std::array<std::array<SlaveErrorCount, 6>, WHOLE_MASTER + 1> bySlave{}; // by slave and error code

  void count(std::size_t slave, int code) {
    const auto place = static_cast<std::size_t>(code);
    if (code < 0 || place >= total.size())
      return;
    auto& own = bySlave[std::min(slave, WHOLE_MASTER)][place];
    own = {own.count + 1, own.count == 0 ? cycle : own.first, cycle};
    const bool first = total[place]++ == 0;
    if (first || lastCycle[place] + 1 < cycle)
      streak[place] = 1;
    else if (lastCycle[place] + 1 == cycle)
      ++streak[place];
    lastCycle[place] = cycle;
  }

  // In the cycle, too.
  std::uint64_t sum() const { return std::accumulate(total.begin(), total.end(), std::uint64_t{0}); }

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
