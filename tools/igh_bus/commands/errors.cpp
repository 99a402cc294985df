// igh_bus errors: the error counters of every slave and port.
#include "bus/BusChoice.h"
#include "bus/Registers.h"
#include "bus/Survey.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "text/Text.h"

#include <cstdio>

namespace igh_bus {
namespace {

constexpr std::size_t PORTS = 4;

struct ErrorsOptions : ScanOptions {
  bool clear = false;
};

constexpr const char* HEADING = "slave  port  CRC/invalid frame  RX/physical error  forwarded  lost link  "
                                "processing unit  PDI";

// One row for each port; what a slave has once stands in its first row.
void printCounters(std::size_t slave, const std::vector<std::uint8_t>& counters) {
  const auto at = [&](std::size_t offset) { return unsigned{counters[offset]}; };
  for (std::size_t port = 0; port < PORTS; ++port) {
    std::printf("%5zu  %4zu  %17u  %17u  %9u  %9u", slave, port, at(2 * port), at(2 * port + 1), at(8 + port),
                at(0x10 + port));
    if (port == 0)
      std::printf("  %15u  %3u", at(0x0C), at(0x0D));
    std::printf("\n");
  }
}

// Runs access(slave) for every slave; one that fails does not keep the others from being served.
template <typename Access> std::string forEachSlave(std::size_t count, Access access) {
  std::string firstFailure;
  for (std::size_t slave = 0; slave < count; ++slave) {
    try {
      access(static_cast<std::uint16_t>(slave));
    } catch (const Failure& failure) {
      firstFailure = firstFailure.empty() ? failure.what() : firstFailure;
      std::printf("%5zu     -  cannot be reached\n", slave);
    }
  }
  return firstFailure;
}

Status errors(const ErrorsOptions& options) {
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto count = surveyBus(options, devices).size();
  const Registers registers(options.master);
  std::printf("%s\n", HEADING);
  auto failure = forEachSlave(count, [&](std::uint16_t slave) {
    printCounters(slave, registers.read(slave, ERROR_COUNTERS, ERROR_COUNTER_BYTES));
  });
  if (options.clear && failure.empty()) {
    failure = forEachSlave(count, [&](std::uint16_t slave) { registers.clearErrorCounters(slave); });
    if (failure.empty())
      std::printf("All counters are cleared.\n");
  }
  if (!failure.empty())
    throw Failure(busError, failure);
  return success;
}

} // namespace

void addErrorsCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "errors", "Show the error counters of every slave and port");
  const auto options = std::make_shared<ErrorsOptions>();
  command->add_flag("--clear", options->clear, "Clear the counters after they were shown");
  addBusOptions(*command, *options, false);
  command->callback([options, &action] { action = [options] { return errors(*options); }; });
}

} // namespace igh_bus
