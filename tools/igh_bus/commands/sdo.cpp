// igh_bus sdo: reads or writes one object of a slave.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "bus/Survey.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "sdo/SdoTransfer.h"
#include "text/Text.h"

#include <cstdio>

namespace igh_bus {
namespace {

constexpr std::uint32_t MOST_BYTES = 1U << 20;
constexpr double LONGEST_TIMEOUT = 3600; // seconds

struct SdoOptions : ScanOptions {
  std::uint32_t slave = 0;
  std::string object;
  std::vector<std::string> values;
  std::string type;
  std::optional<std::uint32_t> count;
  bool complete = false;
  bool raw = false;
  double timeoutSeconds = 5;
};

void takeObject(const SdoOptions& options, SdoTransfer& transfer) {
  const auto colon = options.object.find(':');
  transfer.slave = options.slave;
  transfer.index = static_cast<std::uint16_t>(parseNumber(options.object.substr(0, colon), 0xFFFF, "index"));
  if (colon == std::string::npos)
    return;
  if (options.complete)
    throw Failure(usageError, options.object + ": --complete is for the whole object, leave ':SUB' out");
  transfer.subindex =
      static_cast<std::uint8_t>(parseNumber(options.object.substr(colon + 1), 0xFF, "sub-index"));
}

// The bytes to write, or as many as shall be read.
void takeBytes(const SdoOptions& options, SdoTransfer& transfer) {
  if (!options.type.empty())
    throw Failure(usageError, "--type does not go with --raw and --complete, which move bytes");
  if (transfer.read && !options.count)
    throw Failure(usageError, "give --count, the number of bytes to read");
  transfer.bytes = transfer.read ? std::vector<std::uint8_t>(*options.count) : parseBytes(options.values);
}

// Without --type the description tells, for objects that are process data.
const SdoType& typeOf(const SdoOptions& options, const SdoTransfer& transfer, const Device& device) {
  if (!options.type.empty())
    return parseType(options.type);
  std::string name;
  forEachEntry(device, [&](const SyncManager&, const Pdo&, const Entry& entry) {
    if (entry.index == transfer.index && entry.subindex == transfer.subindex)
      name = entry.type;
  });
  if (convertedBytes(name) == 0)
    throw Failure(usageError,
                  "the description gives no type for " + transfer.object() + ": use --type or --raw");
  return parseType(name);
}

void takeValues(const SdoOptions& options, const Device& device, SdoTransfer& transfer) {
  transfer.type = &typeOf(options, transfer, device);
  if (transfer.read)
    transfer.values.resize(options.count.value_or(1));
  for (const auto& text : options.values)
    transfer.values.push_back(parseValue(*transfer.type, text));
}

SdoTransfer plan(const SdoOptions& options, bool read, const std::vector<FoundSlave>& slaves) {
  SdoTransfer transfer;
  transfer.complete = options.complete;
  transfer.read = read;
  checkSlave(options.slave, slaves);
  const auto* device = slaves[options.slave].device;
  if (!device)
    throw Failure(usageError,
                  format("slave %u has no description and therefore no SDO requests", options.slave));
  takeObject(options, transfer);
  if (options.raw || options.complete)
    takeBytes(options, transfer);
  else
    takeValues(options, *device, transfer);
  const auto count = transfer.type ? transfer.values.size() : transfer.bytes.size();
  if (options.count && *options.count != count)
    throw Failure(usageError,
                  format("--count %u does not fit the %zu that are given", *options.count, count));
  if (count == 0)
    throw Failure(usageError, "there is nothing to write");
  return transfer;
}

std::string contentText(const SdoTransfer& transfer) {
  if (!transfer.type)
    return hexPairs(transfer.bytes);
  std::string text;
  for (const double value : transfer.values)
    text += (text.empty() ? "" : ", ") + valueText(*transfer.type, value);
  return text;
}

Status sdo(const SdoOptions& options, bool read) {
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  auto transfer = plan(options, read, surveyBus(options, devices));
  runTransfer(options, options.timeoutSeconds, transfer);
  std::printf("%s %s %s\n", transfer.object().c_str(), read ? "=" : "set to", contentText(transfer).c_str());
  return success;
}

void addTransfer(CLI::App& app, bool read, const std::shared_ptr<SdoOptions>& options, Action& action) {
  auto* command = addCommand(app, read ? "read" : "write", read ? "Read an object" : "Write an object");
  command->add_option("SLAVE", options->slave, "The slave's number in scan order")
      ->check(wholeNumber(0, UINT16_MAX))
      ->required();
  command->add_option("INDEX[:SUB]", options->object, "The object, such as 0x6041 or 0x1018:1")->required();
  if (!read)
    command->add_option("VALUE", options->values, "Numbers of the type; bytes with --raw")->required();
  command->add_option("--type", options->type,
                      "SINT, USINT, INT, UINT, DINT, UDINT, REAL or LREAL; for process data the description "
                      "knows it");
  command->add_option("--count", options->count, "Numbers, or bytes with --raw and --complete (1)")
      ->check(wholeNumber(1, MOST_BYTES))
      ->type_name("N");
  command->add_flag("--raw", options->raw, "Bytes, as pairs of hexadecimal digits");
  command->add_flag(
      "--complete", options->complete,
      "The whole object by complete access, as bytes. When reading, --count must be its length: "
      "behind a shorter answer stand zeros");
  command->add_option("--timeout", options->timeoutSeconds, "Longest time in seconds (5)")
      ->check(CLI::Range(0.001, LONGEST_TIMEOUT))
      ->type_name("S");
  addBusOptions(*command, *options);
  command->callback([options, read, &action] { action = [options, read] { return sdo(*options, read); }; });
}

} // namespace

void addSdoCommand(CLI::App& app, Action& action) {
  auto* command =
      addCommand(app, "sdo",
                 "Read or write an object of a slave. The bus is brought up for the transfer, with "
                 "all outputs 0");
  command->require_subcommand(1);
  const auto options = std::make_shared<SdoOptions>();
  addTransfer(*command, true, options, action);
  addTransfer(*command, false, options, action);
}

} // namespace igh_bus
