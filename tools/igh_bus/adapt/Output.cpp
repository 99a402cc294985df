#include "adapt/Output.h"

#include "text/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace igh_bus::adapt {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw Failure(usageError, path + ": " + reason);
}

// What a link leads to is what is replaced.
std::string resolved(const std::string& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error))
    return path;
  const auto target = fs::weakly_canonical(path, error);
  return error ? path : target.string();
}

// The permissions that a new file gets, or those that the old one has.
mode_t permissionsFor(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0)
    return status.st_mode & 0777U;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666U & ~mask;
}

} // namespace

void checkOutput(const std::string& path, const std::vector<std::string>& inputs) {
  std::error_code error;
  for (const auto& input : inputs) {
    if (fs::equivalent(path, input, error))
      refuse(path, "is one of the inputs");
  }
  if (fs::is_directory(path, error))
    refuse(path, "is a directory");
  if (fs::exists(path, error) && !fs::is_regular_file(path, error))
    refuse(path, "is not a regular file");
  if (fs::exists(path, error) && access(path.c_str(), W_OK) != 0)
    refuse(path, std::strerror(errno));
}

Output::Output(const std::string& path) : m_path(resolved(path)), m_beside(m_path + ".XXXXXX") {
  const int file = mkstemp(m_beside.data());
  if (file < 0) {
    const std::string reason = std::strerror(errno);
    m_beside.clear();
    refuse(path, reason);
  }
  fchmod(file, permissionsFor(m_path));
  close(file);
}

Output::~Output() {
  if (!m_beside.empty())
    std::remove(m_beside.c_str());
}

Output::Output(Output&& other) noexcept
    : m_path(std::move(other.m_path)), m_beside(std::exchange(other.m_beside, std::string())) {}

void Output::write(const std::string& text) {
  std::ofstream stream(m_beside, std::ios::binary);
  if (!(stream << text).flush())
    refuse(m_path, "cannot be written");
}

void Output::publish() {
  if (std::rename(m_beside.c_str(), m_path.c_str()) != 0)
    refuse(m_path, std::strerror(errno));
  m_beside.clear();
}

} // namespace igh_bus::adapt
