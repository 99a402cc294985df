// What the command line asks of the bus.
#ifndef IGH_BUS_OPTIONS_H
#define IGH_BUS_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace igh_bus {

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

// What a run may do and still be a success.
struct Limits {
  bool strict = false; // real-time, no error, no missed cycle; the limits below stand above it
  std::optional<std::uint64_t> errors;
  std::optional<double> latencyNs;
  std::optional<std::uint64_t> missed; // cycles left out for late wake-ups
};

struct RunOptions : ScanOptions {
  std::uint32_t periodNs = 1000000;
  std::uint64_t cycles = 5000;
  bool exchangeMode = false;
  bool withoutClocks = false;   // no distributed clocks
  bool followReference = false; // the master's time follows the reference clock, instead of leading it
  bool listing = false;
  std::vector<Setting> settings;
  std::vector<EntryAddress> watches;
  bool histogram = false;        // of the wake-up latency, printed at the end
  bool watchAll = false;         // every entry: too many for a line of progress
  std::string recordFile;        // empty: nothing is recorded
  std::uint64_t recordEvery = 1; // cycles
  std::string reportFolder;      // empty: no report
  std::optional<int> priority;
  std::optional<int> cpu;
  bool deepIdleStates = false; // left to the system, also with a priority
  Limits limits;
};

} // namespace igh_bus

#endif
