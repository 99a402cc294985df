#include "text/Redirection.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace igh_bus {

Redirection::Redirection(std::FILE* stream, int target) : m_stream(stream), m_kept(-1) {
  if (target < 0)
    return;
  std::fflush(stream);
  m_kept = fcntl(fileno(stream), F_DUPFD_CLOEXEC, 3);
  if (m_kept >= 0)
    dup2(target, fileno(stream));
}

Redirection::~Redirection() {
  if (m_kept < 0)
    return;
  std::fflush(m_stream);
  dup2(m_kept, fileno(m_stream));
  close(m_kept);
}

StdoutSilencer::StdoutSilencer(bool silent) {
  if (!silent)
    return;
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  m_away.emplace(stdout, nowhere);
  if (nowhere >= 0)
    close(nowhere);
}

StderrCapture::StderrCapture() : m_file(memfd_create("igh_bus", MFD_CLOEXEC)) {
  m_away.emplace(stderr, m_file);
}

StderrCapture::~StderrCapture() {
  m_away.reset();
  if (m_file >= 0)
    close(m_file);
}

std::string StderrCapture::text() {
  m_away.reset();
  std::string text;
  char part[512];
  for (ssize_t count = 0; (count = pread(m_file, part, sizeof part, static_cast<off_t>(text.size()))) > 0;)
    text.append(part, static_cast<std::size_t>(count));
  return text;
}

} // namespace igh_bus
