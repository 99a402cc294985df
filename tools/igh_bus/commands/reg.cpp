// igh_bus reg: reads registers of one slave controller, or clears them.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "bus/DeviceFile.h"
#include "bus/OpenedMaster.h"
#include "bus/Patience.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "text/Question.h"
#include "text/Text.h"

#include <cinttypes>
#include <cstdio>

namespace igh_bus {
namespace {

constexpr std::uint32_t LAST_ADDRESS = 0xFFFF;

struct RegOptions : ScanOptions {
  std::uint32_t slave = 0;
  std::string address;
  std::string length = "1";
  std::vector<std::string> values;
  bool yes = false;
};

struct Range {
  std::uint16_t slave;
  std::uint16_t address;
  std::uint32_t size;
};

Range checkedRange(const RegOptions& options) {
  const auto address = parseNumber(options.address, LAST_ADDRESS, "address");
  const auto size = parseNumber(options.length, LAST_ADDRESS + 1, "length");
  if (size == 0)
    throw Failure(usageError, "length 0: at least 1 byte");
  if (size > LAST_ADDRESS + 1 - address)
    throw Failure(usageError,
                  format("length %s: registers end at 0x%04X, so from 0x%04X on at most %u",
                         options.length.c_str(), LAST_ADDRESS, address, LAST_ADDRESS + 1 - address));
  for (const auto& value : options.values) {
    if (parseNumber(value, UINT32_MAX, "value") != 0)
      throw Failure(usageError, "value " + value +
                                    ": this writes zeros only, so registers can be cleared "
                                    "and not set");
  }
  return {static_cast<std::uint16_t>(options.slave), static_cast<std::uint16_t>(address), size};
}

// Runs access(device file, range, slave) on a bus that has the slave.
template <typename Access> Status onBus(const RegOptions& options, Access access) {
  const auto range = checkedRange(options);
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = OpenedMaster(options.master).slaves(devices);
  checkSlave(options.slave, slaves);
  access(DeviceFile(options.master), range, slaveText(options.slave, slaves));
  return success;
}

void printRegisters(std::uint32_t address, const std::vector<std::uint8_t>& bytes) {
  constexpr std::ptrdiff_t PER_LINE = 16;
  const bool number = bytes.size() <= 8 && (bytes.size() & (bytes.size() - 1)) == 0;
  for (auto from = bytes.begin(); from != bytes.end(); address += PER_LINE) {
    const auto to = from + std::min(PER_LINE, bytes.end() - from);
    std::printf("0x%04X: %s%s", address, hexPairs({from, to}).c_str(), number ? "" : "\n");
    from = to;
  }
  if (!number)
    return;
  std::uint64_t value = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
    value = value << 8 | *byte;
  std::printf(" = %" PRIu64 " (0x%0*" PRIX64 ")\n", value, static_cast<int>(bytes.size() * 2), value);
}

Status readRegisters(const RegOptions& options) {
  return onBus(options, [](const DeviceFile& device, const Range& range, const std::string&) {
    const Patience patience;
    printRegisters(range.address, device.read(range.slave, range.address, range.size));
  });
}

Status clearRegisters(const RegOptions& options) {
  return onBus(options, [&](const DeviceFile& device, const Range& range, const std::string& slave) {
    const auto what =
        format("%u byte%s from 0x%04X on", range.size, range.size == 1 ? "" : "s", unsigned{range.address});
    if (!options.yes && !confirm("really write zeros to " + what + " of " + slave + "?")) {
      std::printf("Nothing was written.\n");
      return;
    }
    const Patience patience;
    device.clear(range.slave, range.address, range.size);
    std::printf("0x%04X: zeros written to %u byte%s of slave %u\n", unsigned{range.address}, range.size,
                range.size == 1 ? "" : "s", unsigned{range.slave});
  });
}

CLI::App* addAccess(CLI::App& app, const char* name, const char* description, RegOptions& options) {
  auto* command = addCommand(app, name, description);
  command->add_option("SLAVE", options.slave, "The slave's number in scan order")
      ->check(wholeNumber(0, UINT16_MAX))
      ->required();
  command->add_option("ADDRESS", options.address, "First register, such as 0x0300")->required();
  command->add_option("LENGTH", options.length, "Bytes (1)");
  addBusOptions(*command, options, false);
  return command;
}

} // namespace

void addRegCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "reg",
                             "Read or clear registers of a slave controller; works beside a running "
                             "application");
  command->require_subcommand(1);
  const auto options = std::make_shared<RegOptions>();
  auto* read = addAccess(*command, "read", "Show registers, and 1, 2, 4 or 8 of them as a number", *options);
  read->callback([options, &action] { action = [options] { return readRegisters(*options); }; });
  auto* write = addAccess(*command, "write",
                          "Write zeros to registers, as the library's register write does: they can be "
                          "cleared, and never set. Asks before",
                          *options);
  write->add_flag("--yes", options->yes, "Write without asking");
  write->add_option("VALUE", options->values, "Must be 0");
  write->callback([options, &action] { action = [options] { return clearRegisters(*options); }; });
}

} // namespace igh_bus
