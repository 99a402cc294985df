// The link as the sending side has found it.
#ifndef ETHERCAT_SIMULATION_LINK_SIGHT_H
#define ETHERCAT_SIMULATION_LINK_SIGHT_H

#include "base/SimulatedTime.h"

namespace ethercat_simulation {

class LinkSight {
public:
  bool up() const { return m_up; }
  void set(bool up) { m_up = up; }
  // Looks at the link in time. True when that has changed what is known.
  bool look(bool link, Moment now) {
    // The driver needs a moment to believe in a link that is up again.
    constexpr Moment TO_BELIEVE = 9 * MILLISECOND;
    if (link && m_up != link) {
      m_change = m_change != 0 ? m_change : now + TO_BELIEVE;
      if (now < m_change) {
        return false;
      }
    }
    return believe(link);
  }
  bool believe(bool link) {
    const bool changed = m_up != link;
    m_change = changed ? 0 : m_change;
    m_up = link;
    return changed;
  }

private:
  bool m_up = true;
  Moment m_change = 0; // what was seen last is not believed before; 0: it is
};

} // namespace ethercat_simulation

#endif
