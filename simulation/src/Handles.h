// The handles that the application holds. A handle is an address that no process can have memory at, and none
// is given out twice: a handle that has died, or a pointer that never was a handle, is recognised without
// touching memory, and one that is followed by mistake faults at once. Nothing is mapped for it, so an
// application that locks its memory pays nothing.
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

  template <class Object> void* create(Object& object, Master& owner) {
    return append({kindOf<Object>(), &object, &owner});
  }
  void kill(void* address);
  // Every handle so far is dead for ever, and the records of them are dropped.
  void forgetAll();

  // Null for an address that is no handle of the masters that exist.
  const Handle* find(const void* address) const {
    const auto distance = reinterpret_cast<std::uintptr_t>(address) - base;
    const std::size_t number = distance / stride - m_forgotten;
    return distance % stride == 0 && number < m_handles.size() ? &m_handles[number] : nullptr;
  }
  // A handle from before the last forgetAll().
  bool isForgotten(const void* address) const {
    return reinterpret_cast<std::uintptr_t>(address) - base < m_forgotten * stride;
  }

private:
  Handles() = default;
  void* append(const Handle& handle);

  static constexpr std::size_t stride = 16;
  // Neither half of the address space of x86-64, with four or five levels of pages; on ARM, where the top
  // byte counts for nothing, in the half of the kernel.
  static constexpr std::uintptr_t base = 0x7EC0'0000'0000'0000;

  std::size_t m_forgotten = 0; // handles of earlier times
  std::vector<Handle> m_handles;
};

} // namespace ethercat_simulation

#endif
