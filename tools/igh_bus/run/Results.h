// What a run shows: progress on a terminal, and everything at the end.
#ifndef IGH_BUS_RESULTS_H
#define IGH_BUS_RESULTS_H

#include "bus/Session.h"
#include "host/RealTime.h"
#include "report/Report.h"

namespace igh_bus {

// The changes of the AL states. Remembers a fixed number, so that the loop never allocates.
class Climb {
public:
  void note(std::uint64_t cycle, std::uint32_t state);
  std::uint32_t state() const { return m_state; }
  bool seen(std::uint32_t state) const { return (m_seen >> state & 1U) != 0; }
  void print() const;
  std::vector<StateChange> changes() const; // those that were remembered

private:
  struct Change {
    std::uint64_t cycle;
    std::uint32_t state;
  };
  std::array<Change, 64> m_changes{};
  std::uint64_t m_count = 0; // also those that found no place
  std::uint32_t m_state = 0;
  std::uint32_t m_seen = 0; // bit n: state n
};

// An error code in words.
const char* errorText(int code);

// One line with the watched values, over the previous one.
void printProgress(const RunOptions& options, const Session& session, std::uint32_t state);

// The fastest, the last and the slowest cycle since activation.
void printTiming(const Session& session);

void printResults(const RunOptions& options, const Session& session, const Pacemaker& pacemaker,
                  const Climb& climb);

} // namespace igh_bus

#endif
