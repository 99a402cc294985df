// The handles that the application holds. A handle is an address inside a reserved range that nothing can
// read or write, and no address is given out twice: a handle that has died, or a pointer that never was a
// handle, is recognised without touching memory, and one that is followed by mistake faults at once.
#ifndef ETHERCAT_SIMULATION_HANDLES_H
#define ETHERCAT_SIMULATION_HANDLES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ethercat_simulation {

class Master;
class SlaveConfiguration;
class Domain;
class SdoRequest;

enum class HandleKind : std::uint8_t { master, slaveConfiguration, domain, sdoRequest };

template <class Object> constexpr HandleKind kindOf();
template <> constexpr HandleKind kindOf<Master>() {
  return HandleKind::master;
}
template <> constexpr HandleKind kindOf<SlaveConfiguration>() {
  return HandleKind::slaveConfiguration;
}
template <> constexpr HandleKind kindOf<Domain>() {
  return HandleKind::domain;
}
template <> constexpr HandleKind kindOf<SdoRequest>() {
  return HandleKind::sdoRequest;
}

struct Handle {
  HandleKind kind;
  void* object;  // null once the handle is dead
  Master* owner; // to whom its misuse is charged
};

class Handles {
public:
  static Handles& instance();

  // Null when the range is used up.
  template <class Object> void* create(Object& object, Master& owner) {
    return append({kindOf<Object>(), &object, &owner});
  }
  void kill(void* address);
  // Every handle so far is dead for ever, and the records of them are dropped.
  void forgetAll();

  // Null for an address that is no handle of the masters that exist.
  const Handle* find(const void* address) const {
    const auto distance = reinterpret_cast<std::uintptr_t>(address) - m_base;
    const std::size_t number = distance / stride - m_forgotten;
    return distance % stride == 0 && number < m_handles.size() ? &m_handles[number] : nullptr;
  }
  // A handle from before the last forgetAll().
  bool isForgotten(const void* address) const {
    return reinterpret_cast<std::uintptr_t>(address) - m_base < m_forgotten * stride;
  }

private:
  Handles();
  void* append(const Handle& handle);

  static constexpr std::size_t stride = 16;
  static constexpr std::size_t rangeSize = std::size_t{1} << 32;

  std::uintptr_t m_base = 0;
  std::size_t m_forgotten = 0; // handles of earlier times
  std::vector<Handle> m_handles;
};

} // namespace ethercat_simulation

#endif
