// Numbers on their way from the cycle to a thread beside it.
#ifndef IGH_BUS_HANDOVER_H
#define IGH_BUS_HANDOVER_H

#include <atomic>
#include <cstdint>
#include <cstring>
#include <vector>

namespace igh_bus {

// A row of values, all of one moment. One thread writes and waits for nobody; who reads while it writes reads
// again. Only the latest row is there.
class Handover {
public:
  explicit Handover(std::size_t values) : m_values(values) {}

  void begin() { m_version.store(m_version.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }
  template <class Value> void put(std::size_t place, Value value) {
    static_assert(sizeof value == sizeof(std::uint64_t));
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    m_values[place].store(bits, std::memory_order_release); // not before the version that begin() leaves
  }
  void end() { m_version.store(m_version.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

  // Which row this is, counted from 1; 0 for none.
  std::uint64_t read(std::vector<std::uint64_t>& values) const {
    values.resize(m_values.size());
    std::uint64_t version = 1;
    do {
      version = m_version.load(std::memory_order_acquire);
      for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = m_values[i].load(std::memory_order_acquire);
    } while (version % 2 != 0 || version != m_version.load(std::memory_order_relaxed));
    return version / 2;
  }
  template <class Value> static Value as(std::uint64_t bits) {
    Value value{};
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

private:
  std::atomic<std::uint64_t> m_version{0}; // odd while a row is written
  std::vector<std::atomic<std::uint64_t>> m_values;
};

} // namespace igh_bus

#endif
