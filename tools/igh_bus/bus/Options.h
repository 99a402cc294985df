// What the command line asks for, and how a command ends.
#ifndef IGH_BUS_OPTIONS_H
#define IGH_BUS_OPTIONS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace igh_bus {

// Exit statuses of the program.
enum Status { success = 0, notLoaded = 1, usageError = 2, busError = 3 };

// Ends a command with one line on standard error; an empty text means that the reason is printed already.
class Failure : public std::runtime_error {
public:
  Failure(Status status, const std::string& text) : std::runtime_error(text), m_status(status) {}
  Status status() const { return m_status; }

private:
  Status m_status;
};

struct EntryAddress {
  std::uint32_t slave = 0; // in scan order
  std::string entry;
};

struct Setting {
  EntryAddress address;
  double value = 0;
};

struct ScanOptions {
  std::vector<std::string> descriptions;
  std::string busFile;
  std::uint16_t master = 0;
};

struct RunOptions : ScanOptions {
  std::uint32_t periodNs = 1000000;
  std::uint64_t cycles = 5000;
  bool exchangeMode = false;
  bool withoutClocks = false;   // no distributed clocks
  bool followReference = false; // the master's time follows the reference clock, instead of leading it
  bool listing = false;
  bool timingOnly = false; // neither the plan nor the results, but the timing of single cycles
  std::vector<Setting> settings;
  std::vector<EntryAddress> watches;
  std::string reportFolder; // empty: no report
  std::optional<int> priority;
  std::optional<int> cpu;
};

Status run(const RunOptions& options);

} // namespace igh_bus

#endif
