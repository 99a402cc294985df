#include "interface/Handles.h"

#include <algorithm>
#include <utility>

namespace ethercat_simulation {

Handles& Handles::instance() {
  // Never destroyed: an application may release its master while the program is ending.
  static Handles& handles = *new Handles;
  return handles;
}

void* Handles::append(const Handle& handle) {
  const std::size_t number = m_count;
  std::unique_ptr<Handle[]>& block = m_blocks.at(blockOf(number));
  if (block == nullptr) {
    block = std::make_unique<Handle[]>(startOf(blockOf(number) + 1) - startOf(blockOf(number)));
  }
  record(number) = handle;
  void* address =
      reinterpret_cast<void*>(BASE + (m_forgotten + number) * STRIDE); // NOLINT(performance-no-int-to-ptr)
  m_alive[handle.owner].push_back(address);
  ++m_count;
  return address;
}

void Handles::kill(void* address) {
  const Handle* handle = find(address);
  if (handle != nullptr) {
    const_cast<Handle*>(handle)->object = nullptr;
  }
}

template <class Keeps> void Handles::killUnless(const Master& owner, Keeps keeps) {
  std::vector<void*>& alive = m_alive[&owner];
  const auto firstDead = std::stable_partition(alive.begin(), alive.end(), keeps);
  std::for_each(firstDead, alive.end(), [&](void* address) { kill(address); });
  alive.erase(firstDead, alive.end());
}

void Handles::killOne(const Master& owner, const void* address) {
  killUnless(owner, [&](const void* other) { return other != address; });
}

void Handles::killSetUp(const Master& owner) {
  killUnless(owner, [&](const void* address) {
    return isOpened(address) || find(address)->kind == HandleKind::master;
  });
}

void Handles::killAll(const Master& owner) {
  killUnless(owner, [&](const void* address) { return isOpened(address); });
}

void Handles::forgetAll() {
  m_alive.clear();
  m_forgotten += std::exchange(m_count, 0);
  for (auto& block : m_blocks) {
    block.reset();
  }
}

} // namespace ethercat_simulation
