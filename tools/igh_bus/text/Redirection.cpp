#include "text/Redirection.h"

#include "text/Failure.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
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

KeptStdout::KeptStdout() : m_file(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
  std::fflush(stdout);
}

KeptStdout::~KeptStdout() {
  if (m_file >= 0)
    close(m_file);
}

void KeptStdout::write(const std::string& text) const {
  for (std::size_t written = 0; written < text.size();) {
    const auto count = ::write(m_file, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      throw Failure(usageError, std::string("standard output: ") + std::strerror(errno));
    written += static_cast<std::size_t>(count);
  }
}

void KeptStdout::writeInPassing(const std::string& text) const {
  for (std::size_t done = 0; done < text.size();) {
    pollfd ready{m_file, POLLOUT, 0};
    if (poll(&ready, 1, 0) != 1)
      return;
    const ssize_t written =
        ::write(m_file, text.data() + done,
                std::min<std::size_t>(text.size() - done, PIPE_BUF)); // a pipe has so much room
    if (written <= 0)
      return;
    done += static_cast<std::size_t>(written);
  }
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
