#include "Handles.h"

#include <sys/mman.h>

namespace ethercat_simulation {

Handles& Handles::instance() {
  // Never destroyed: an application may release its master while the program is ending.
  static Handles& handles = *new Handles;
  return handles;
}

Handles::Handles() {
  void* range = mmap(nullptr, rangeSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  m_base = range == MAP_FAILED ? 0 : reinterpret_cast<std::uintptr_t>(range);
}

void* Handles::append(const Handle& handle) {
  const std::size_t number = m_forgotten + m_handles.size();
  if (m_base == 0 || number >= rangeSize / stride) {
    return nullptr;
  }
  m_handles.push_back(handle);
  return reinterpret_cast<void*>(m_base + number * stride); // NOLINT(performance-no-int-to-ptr)
}

void Handles::kill(void* address) {
  const Handle* handle = find(address);
  if (handle != nullptr) {
    m_handles[static_cast<std::size_t>(handle - m_handles.data())].object = nullptr;
  }
}

void Handles::forgetAll() {
  m_forgotten += m_handles.size();
  m_handles.clear();
  m_handles.shrink_to_fit();
}

} // namespace ethercat_simulation
