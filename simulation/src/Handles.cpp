#include "Handles.h"

namespace ethercat_simulation {

Handles& Handles::instance() {
  // Never destroyed: an application may release its master while the program is ending.
  static Handles& handles = *new Handles;
  return handles;
}

void* Handles::append(const Handle& handle) {
  const std::size_t number = m_forgotten + m_handles.size();
  m_handles.push_back(handle);
  return reinterpret_cast<void*>(base + number * stride); // NOLINT(performance-no-int-to-ptr)
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
