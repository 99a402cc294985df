#include "adapt/ScratchFile.h"

#include "text/Failure.h"

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace igh_bus::adapt {

ScratchFile::ScratchFile() : m_file(memfd_create("igh_bus_adapt", MFD_CLOEXEC)) {
  if (m_file < 0)
    throw Failure(busError, std::string("no scratch file: ") + std::strerror(errno));
}

ScratchFile::~ScratchFile() {
  close(m_file);
}

std::string ScratchFile::path() const {
  return "/proc/self/fd/" + std::to_string(m_file);
}

} // namespace igh_bus::adapt
