#include "StdoutSilencer.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace igh_bus {

StdoutSilencer::StdoutSilencer(bool silent) {
  if (!silent)
    return;
  std::fflush(stdout);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0)
    return;
  m_kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  if (m_kept >= 0)
    dup2(nowhere, STDOUT_FILENO);
  close(nowhere);
}

StdoutSilencer::~StdoutSilencer() {
  if (m_kept < 0)
    return;
  std::fflush(stdout);
  dup2(m_kept, STDOUT_FILENO);
  close(m_kept);
}

} // namespace igh_bus
