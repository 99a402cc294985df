// Who is called once per cycle of a master.
#ifndef ETHERCAT_SIMULATION_OBSERVERS_H
#define ETHERCAT_SIMULATION_OBSERVERS_H

#include <cstdint>
#include <functional>
#include <list>

namespace ethercat_simulation {

// While they are called, any of them may come and go: one that came is called from the next cycle on, one
// that went is destroyed behind the last.
class Observers {
public:
  using Observer = std::function<void(std::uint64_t cycle)>;

  unsigned int add(Observer observer) {
    m_entries.push_back({++m_lastNumber, std::move(observer)});
    return m_lastNumber;
  }
  bool remove(unsigned int number); // false: there is none with this number
  void call(std::uint64_t cycle);

private:
  static constexpr unsigned int GONE = 0;
  struct Entry {
    unsigned int number;
    Observer observer;
  };

  std::list<Entry> m_entries; // stay where they are while others come
  unsigned int m_lastNumber = GONE;
  bool m_calling = false;
};

} // namespace ethercat_simulation

#endif
