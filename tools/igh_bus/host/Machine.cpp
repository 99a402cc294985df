#include "host/Machine.h"

#include "host/Ethtool.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <sys/ioctl.h>
#include <unistd.h>

namespace igh_bus {
namespace {

class Descriptor {
public:
  Descriptor(const std::string& path, int flags) : m_number(open(path.c_str(), flags | O_CLOEXEC)) {}
  ~Descriptor() {
    if (m_number >= 0)
      close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return m_number; }

private:
  int m_number;
};

// Regular files only, as those of /proc and /sys are: a pipe without a writer would hang, and opening a
// device can do something.
std::optional<std::string> content(const std::string& path) {
  constexpr std::size_t LONGEST = 65536;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
    return std::nullopt;
  const Descriptor file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (file.number() < 0)
    return std::nullopt;
  std::string text;
  char part[4096];
  ssize_t count = 0;
  while (text.size() < LONGEST && (count = read(file.number(), part, sizeof part)) > 0)
    text.append(part, static_cast<std::size_t>(count));
  if (count < 0)
    return std::nullopt;
  return text;
}

std::string printable(std::string text) {
  text.resize(std::min(text.find_last_not_of(" \t\r") + 1, std::size_t{4096}));
  for (char& letter : text) {
    if (letter < ' ' || letter > '~')
      letter = letter == '\t' ? ' ' : '?';
  }
  return text;
}

} // namespace

std::vector<std::string> Machine::lines(const std::string& path) const {
  std::vector<std::string> list;
  const auto text = content(m_root + path);
  for (std::size_t from = 0; text && from < text->size();) {
    const auto end = std::min(text->find('\n', from), text->size());
    list.push_back(printable(text->substr(from, end - from)));
    from = end + 1;
  }
  return list;
}

std::optional<std::string> Machine::line(const std::string& path) const {
  const auto text = content(m_root + path);
  if (!text)
    return std::nullopt;
  return printable(text->substr(0, text->find('\n')));
}

std::optional<std::int64_t> Machine::number(const std::string& path) const {
  const auto text = line(path).value_or("");
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

std::vector<std::string> Machine::names(const std::string& folder) const {
  std::vector<std::string> list;
  std::error_code error;
  for (std::filesystem::directory_iterator place(m_root + folder, error), end; !error && place != end;
       place.increment(error))
    list.push_back(place->path().filename());
  std::sort(list.begin(), list.end());
  return list;
}

std::string Machine::target(const std::string& link) const {
  std::error_code error;
  return std::filesystem::read_symlink(m_root + link, error);
}

std::optional<struct stat> Machine::status(const std::string& path) const {
  struct stat status {};
  if (stat((m_root + path).c_str(), &status) != 0)
    return std::nullopt;
  return status;
}

NodeAnswer Machine::askNode(const std::string& path) const {
  if (!m_root.empty())
    return {exists(path) ? 0 : ENOENT, std::nullopt};
  constexpr unsigned long MODULE_INFO = 0x8008A400;
  const Descriptor node(path, O_RDWR);
  if (node.number() < 0)
    return {errno, std::nullopt};
  std::uint32_t module[2] = {}; // ioctl magic, number of masters
  if (ioctl(node.number(), MODULE_INFO, module) != 0)
    return {};
  return {0, module[0]};
}

bool Machine::mayWrite(const std::string& path) const {
  if (m_root.empty())
    return access(path.c_str(), W_OK) == 0;
  const auto status = this->status(path);
  return status && (status->st_mode & 0022U) != 0;
}

std::map<std::string, std::string> Machine::cardSettings(const std::string& card) const {
  if (m_root.empty())
    return ethtoolSettings(card);
  std::map<std::string, std::string> settings;
  for (const auto& text : lines("/ethtool/" + card)) {
    const auto colon = text.find(": ");
    if (colon != std::string::npos)
      settings[text.substr(0, colon)] = text.substr(colon + 2);
  }
  return settings;
}

} // namespace igh_bus
