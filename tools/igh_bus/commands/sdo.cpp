// igh_bus sdo: reads or writes one object of a slave.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "sdo/KnownObjects.h"
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
  bool throughLibrary = false;
  double timeoutSeconds = 5;

  bool inBytes() const { return raw || complete; }
};

[[noreturn]] void refuse(const std::string& text) {
  throw Failure(usageError, text);
}

void checkOptions(const SdoOptions& options, bool read) {
  if (options.inBytes() && !options.type.empty())
    refuse("--type does not go with --raw and --complete, which move bytes");
  if (options.throughLibrary && options.descriptions.empty())
    refuse("--through-library needs --eni: the library drives slaves that have a description");
  if (read && options.complete && !options.throughLibrary)
    refuse("the IgH master reads by complete access only in the cycle: use --through-library with --count, "
           "or 'sdo list SLAVE INDEX' for all sub-indexes");
  if (read && options.throughLibrary && options.inBytes() && !options.count)
    refuse("give --count, the number of bytes to read");
}

void takeObject(const SdoOptions& options, SdoTransfer& transfer) {
  const auto colon = options.object.find(':');
  transfer.slave = options.slave;
  transfer.index = static_cast<std::uint16_t>(parseNumber(options.object.substr(0, colon), 0xFFFF, "index"));
  if (colon == std::string::npos)
    return;
  if (options.complete)
    refuse(options.object + ": --complete is for the whole object, leave ':SUB' out");
  transfer.subindex =
      static_cast<std::uint8_t>(parseNumber(options.object.substr(colon + 1), 0xFF, "sub-index"));
}

// Null: bytes, or a read that shows what came. Without --type the description tells, where it does.
const SdoType* typeOf(const SdoOptions& options, const SdoTransfer& transfer, const Device* device) {
  const bool needed = !transfer.read || options.throughLibrary || options.count;
  if (options.inBytes() || (options.type.empty() && !needed))
    return nullptr;
  const auto* type = !options.type.empty() ? &parseType(options.type)
                                           : KnownObjects(device).type(transfer.index, transfer.subindex);
  if (!type)
    refuse("the description gives no type for " + transfer.object() + ": use --type or --raw");
  if (options.throughLibrary && !type->converted())
    refuse(std::string("type ") + type->name + ": the library cannot convert it; use --raw");
  return type;
}

// How many bytes shall be read, when that is said; the library has to know.
std::optional<std::uint32_t> wantedSize(const SdoOptions& options, const SdoType* type) {
  if (!options.count && !options.throughLibrary)
    return {};
  if (options.count && type && type->size == 0)
    refuse("--count goes with --raw and with types of a fixed length");
  return options.count.value_or(1) * (type ? type->size : 1);
}

void takeContent(const SdoOptions& options, const Device* device, SdoTransfer& transfer) {
  transfer.type = typeOf(options, transfer, device);
  if (transfer.read) {
    transfer.size = wantedSize(options, transfer.type);
    return;
  }
  transfer.bytes = transfer.type ? parseValues(*transfer.type, options.values) : parseBytes(options.values);
  const auto count = transfer.type ? options.values.size() : transfer.bytes.size();
  if (options.count && *options.count != count)
    refuse(format("--count %u does not fit the %zu that are given", *options.count, count));
  if (transfer.bytes.empty())
    refuse("there is nothing to write");
}

SdoTransfer plan(const SdoOptions& options, bool read, const std::vector<FoundSlave>& slaves) {
  SdoTransfer transfer;
  transfer.complete = options.complete;
  transfer.read = read;
  checkSlave(options.slave, slaves);
  checkOptions(options, read);
  const auto* device = slaves[options.slave].device;
  if (!device && options.throughLibrary)
    refuse(format("slave %u has no description and therefore no SDO requests", options.slave));
  takeObject(options, transfer);
  takeContent(options, device, transfer);
  return transfer;
}

std::string contentText(const SdoOptions& options, const SdoTransfer& transfer, const Device* device) {
  if (transfer.type)
    return valuesText(*transfer.type, transfer.bytes);
  return options.inBytes() ? hexPairs(transfer.bytes)
                           : KnownObjects(device).text(transfer.index, transfer.subindex, transfer.bytes);
}

Status sdo(const SdoOptions& options, bool read) {
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  std::optional<OpenedMaster> master(options.master);
  const auto slaves = master->slaves(devices);
  auto transfer = plan(options, read, slaves);
  if (options.throughLibrary) {
    master.reset(); // the library reserves it
    transferByLibrary(options, options.timeoutSeconds, transfer);
  } else {
    transferByCall(*master, options.timeoutSeconds, transfer);
  }
  std::printf("%s %s %s\n", transfer.object().c_str(), read ? "=" : "set to",
              contentText(options, transfer, slaves[options.slave].device).c_str());
  return success;
}

void addTransfer(CLI::App& app, bool read, const std::shared_ptr<SdoOptions>& options, Action& action) {
  auto* command = addCommand(app, read ? "read" : "write", read ? "Read an object" : "Write an object");
  command->add_option("SLAVE", options->slave, "The slave's number in scan order")
      ->check(wholeNumber(0, UINT16_MAX))
      ->required();
  command->add_option("INDEX[:SUB]", options->object, "The object, such as 0x6041 or 0x1018:1")->required();
  if (!read)
    command->add_option("VALUE", options->values, "Numbers of the type, or a text; bytes with --raw")
        ->required();
  command->add_option(
      "--type", options->type,
      "BOOL, SINT, USINT, INT, UINT, DINT, UDINT, LINT, ULINT, REAL, LREAL or STRING. Without "
      "it the description tells, where it does; else a read shows what its length allows");
  command
      ->add_option("--count", options->count,
                   "Numbers, or bytes with --raw and --complete, that an answer must have")
      ->check(wholeNumber(1, MOST_BYTES))
      ->type_name("N");
  command->add_flag("--raw", options->raw, "Bytes, as pairs of hexadecimal digits");
  command->add_flag(
      "--complete", options->complete,
      "The whole object by complete access, as bytes; reading only with --through-library and its length as "
      "--count: behind a shorter answer stand zeros");
  command->add_flag("--through-library", options->throughLibrary,
                    "By the library's cyclic requests, as an application transfers: activates the bus, with "
                    "all outputs 0; needs --eni");
  command->add_option("--timeout", options->timeoutSeconds, "Longest time in seconds (5)")
      ->check(CLI::Range(0.001, LONGEST_TIMEOUT))
      ->type_name("S");
  addBusOptions(*command, *options, false);
  command->callback([options, read, &action] { action = [options, read] { return sdo(*options, read); }; });
}

} // namespace

void addSdoCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "sdo",
                             "Read, write or list objects of a slave; works in PREOP and beside a running "
                             "application");
  command->require_subcommand(1);
  const auto options = std::make_shared<SdoOptions>();
  addTransfer(*command, true, options, action);
  addTransfer(*command, false, options, action);
  addSdoListCommand(*command, action);
}

} // namespace igh_bus
