#include "run/Climb.h"

#include "text/Text.h"

#include <cinttypes>
#include <cstdio>

namespace igh_bus {

void Climb::note(std::uint64_t cycle, std::uint32_t state) {
  if (state == m_state && m_count != 0)
    return;
  m_state = state;
  m_seen |= 1U << state;
  if (m_count < m_changes.size())
    m_changes[m_count] = {cycle, state};
  ++m_count;
}

std::vector<StateChange> Climb::changes() const {
  std::vector<StateChange> list;
  for (std::size_t i = 0; i < m_changes.size() && i < m_count; ++i)
    list.push_back({m_changes[i].cycle, stateText(m_changes[i].state)});
  return list;
}

void Climb::print() const {
  std::printf("\nStates of the slaves\n");
  const auto kept = changes();
  for (const auto& change : kept)
    std::printf("  cycle %8" PRIu64 "  %s\n", change.cycle, change.states.c_str());
  if (m_count > kept.size())
    std::printf("  and %" PRIu64 " more changes, the last to %s\n", m_count - kept.size(),
                stateText(m_state).c_str());
}

} // namespace igh_bus
