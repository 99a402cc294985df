#include "host/IdleStates.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace igh_bus {

IdleStates::~IdleStates() {
  if (m_request >= 0)
    close(m_request);
}

std::string IdleStates::holdOff(const std::string& requestFile) {
  constexpr std::int32_t LONGEST_US = 0;
  m_request = open(requestFile.c_str(), O_WRONLY | O_CLOEXEC);
  if (m_request >= 0 && write(m_request, &LONGEST_US, sizeof LONGEST_US) == sizeof LONGEST_US)
    return {};
  return requestFile + ": " + std::strerror(errno);
}

} // namespace igh_bus
