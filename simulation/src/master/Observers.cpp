#include "master/Observers.h"

#include <algorithm>

namespace ethercat_simulation {

bool Observers::remove(unsigned int number) {
  const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
    return entry.number == number && number != GONE;
  });
  if (found == m_entries.end()) {
    return false;
  }
  if (m_calling) {
    found->number = GONE; // it may be the one that runs
  } else {
    m_entries.erase(found);
  }
  return true;
}

void Observers::call(std::uint64_t cycle) {
  if (m_entries.empty()) {
    return;
  }
  m_calling = true;
  const unsigned int last = m_lastNumber;
  for (Entry& entry : m_entries) {
    if (entry.number != GONE && entry.number <= last) {
      entry.observer(cycle);
    }
  }
  m_calling = false;
  m_entries.remove_if([](const Entry& entry) { return entry.number == GONE; });
}

} // namespace ethercat_simulation
