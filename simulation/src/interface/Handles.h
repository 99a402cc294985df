// The handles that the application holds. A handle is an address that no process can have memory at, and none
// is given out twice: a handle that has died, or a pointer that never was a handle, is recognised without
// touching memory, and one that is followed by mistake faults at once. Nothing is mapped for it, so an
// application that locks its memory pays nothing.
#ifndef ETHERCAT_SIMULATION_HANDLES_H
#define ETHERCAT_SIMULATION_HANDLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ethercat_simulation {

class Master;
class SlaveConfiguration;
class Domain;
class SdoRequest;

enum class HandleKind : std::uint8_t { master, openedMaster, slaveConfiguration, domain, sdoRequest };

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
  // Of a master that its holder has not reserved.
  void* createOpened(Master& master) { return append({HandleKind::openedMaster, &master, &master}); }
  bool isOpened(const void* address) const {
    const Handle* handle = find(address);
    return handle != nullptr && handle->kind == HandleKind::openedMaster;
  }
  void killOne(const Master& owner, const void* address);
  // What the application has set up on a master dies with a deactivation; the master's own handle only with
  // its release, and those that were only opened with neither.
  void killSetUp(const Master& owner);
  void killAll(const Master& owner);
  // Every handle so far is dead for ever, and the records of them are dropped.
  void forgetAll();

  // Null for an address that is no handle of the masters that exist.
  const Handle* find(const void* address) const {
    const auto distance = reinterpret_cast<std::uintptr_t>(address) - BASE;
    const std::size_t number = distance / STRIDE - m_forgotten;
    return distance % STRIDE == 0 && number < m_count ? &record(number) : nullptr;
  }
  // A handle from before the last forgetAll().
  bool isForgotten(const void* address) const {
    return reinterpret_cast<std::uintptr_t>(address) - BASE < m_forgotten * STRIDE;
  }

private:
  Handles() = default;
  void kill(void* address);
  void* append(const Handle& handle);
  template <class Keeps> void killUnless(const Master& owner, Keeps keeps);

  // Blocks of 64, 64, 128, 256 and so on: of a number, the highest bit tells the block.
  static constexpr std::size_t FIRST_BLOCK = 64;
  static std::size_t blockOf(std::size_t number) {
    return number < FIRST_BLOCK ? 0 : static_cast<std::size_t>(58 - __builtin_clzl(number));
  }
  static std::size_t startOf(std::size_t block) { return block == 0 ? 0 : FIRST_BLOCK << (block - 1); }
  Handle& record(std::size_t number) const {
    const std::size_t block = blockOf(number);
    return m_blocks[block][number - startOf(block)];
  }

  static constexpr std::size_t STRIDE = 16;
  // Neither half of the address space of x86-64, with four or five levels of pages; on ARM, where the top
  // byte counts for nothing, in the half of the kernel.
  static constexpr std::uintptr_t BASE = 0x7EC0'0000'0000'0000;

  std::size_t m_forgotten = 0; // handles of earlier times
  std::size_t m_count = 0;
  std::array<std::unique_ptr<Handle[]>, 32> m_blocks;
  std::unordered_map<const Master*, std::vector<void*>> m_alive;
};

} // namespace ethercat_simulation

#endif
