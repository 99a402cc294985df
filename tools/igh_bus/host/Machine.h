// The files of /proc, /sys, /dev and /etc, of this machine or of a copy of another's. They may be anything:
// what cannot be read or makes no sense is unknown.
#ifndef IGH_BUS_MACHINE_H
#define IGH_BUS_MACHINE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace igh_bus {

// What the master's device node says when it is opened for writing.
struct NodeAnswer {
  int error = 0;                      // errno of opening, 0 when it opened
  std::optional<std::uint32_t> magic; // of the kernel module's ioctls
};

class Machine {
public:
  // The folder that stands for "/"; empty for this machine itself.
  explicit Machine(std::string root = "") : m_root(std::move(root)) {}
  virtual ~Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // Without blanks at the end, in printable characters, and of a limited length.
  std::optional<std::string> line(const std::string& path) const; // the first
  std::vector<std::string> lines(const std::string& path) const;
  std::optional<std::int64_t> number(const std::string& path) const;
  // Of a folder, sorted; empty also when there is none.
  std::vector<std::string> names(const std::string& folder) const;
  std::string target(const std::string& link) const;
  bool exists(const std::string& path) const { return status(path).has_value(); }
  std::optional<struct stat> status(const std::string& path) const;

  // What has to be asked by system calls on this machine. A copy has files instead: its node is what it has
  // of it, and ethtool/CARD holds what ethtool -c CARD and ethtool -k CARD printed.
  virtual NodeAnswer askNode(const std::string& path) const;
  virtual bool mayWrite(const std::string& path) const;
  // By the names that ethtool prints.
  virtual std::map<std::string, std::string> cardSettings(const std::string& card) const;

private:
  std::string m_root;
};

} // namespace igh_bus

#endif
