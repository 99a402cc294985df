#ifndef IGH_BUS_CLIMB_H
#define IGH_BUS_CLIMB_H

#include "report/Report.h"

#include <algorithm>
#include <array>

namespace igh_bus {

// The changes of the AL states. Remembers a fixed number, so that the loop never allocates.
class Climb {
public:
  void note(std::uint64_t cycle, std::uint32_t state);
  std::uint32_t state() const { return m_state; }
  bool seen(std::uint32_t state) const { return (m_seen >> state & 1U) != 0; }
  void print() const;
  std::vector<StateChange> changes() const; // those that were remembered
  std::uint64_t forgotten() const { return m_count - std::min<std::uint64_t>(m_count, m_changes.size()); }

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

} // namespace igh_bus

#endif
