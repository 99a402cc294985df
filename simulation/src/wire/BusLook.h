// What the master knows of the slaves that answer and of their AL states: it looks now and then.
#ifndef ETHERCAT_SIMULATION_BUS_LOOK_H
#define ETHERCAT_SIMULATION_BUS_LOOK_H

#include "wire/Line.h"

namespace ethercat_simulation {

class BusLook {
public:
  void take(const Line& line, bool link) {
    m_responding = link ? static_cast<unsigned int>(line.reachedSize()) : 0;
    m_states = link ? line.states() : std::uint8_t{0};
  }
  void take(const Line& line, bool link, Moment now) {
    take(line, link);
    m_at = now;
    m_by = 0;
  }
  // The next look is at this moment, if not earlier.
  void hurry(Moment by) { m_by = by; }
  bool isDue(Moment now, Moment pause) const { return (m_by != 0 && now >= m_by) || now - m_at >= pause; }
  void forget() {
    m_responding = 0;
    m_states = 0;
  }

  unsigned int responding() const { return m_responding; }
  std::uint8_t states() const { return m_states; }

private:
  unsigned int m_responding = 0;
  std::uint8_t m_states = 0;
  Moment m_at = 0;
  Moment m_by = 0; // 0: no hurry
};

} // namespace ethercat_simulation

#endif
