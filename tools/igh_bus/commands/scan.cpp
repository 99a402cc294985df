// igh_bus scan: the slaves on the bus as they are, and which description each gets.
#include "adapt/Hint.h"
#include "bus/BusChoice.h"
#include "bus/OpenedMaster.h"
#include "bus/Patience.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "scan/SeenSlave.h"

#include <cstdio>

namespace igh_bus {
namespace {

struct ScanArguments : ScanOptions {
  bool verbose = false;
  bool pdos = false;
  bool json = false;
};

// Empty without descriptions, too: there is nothing to adapt then.
std::string hintFor(const ScanArguments& arguments, const std::vector<SeenSlave>& slaves) {
  std::vector<DeviceKey> keys;
  for (const auto& slave : slaves) {
    const auto& info = slave.found.info;
    keys.push_back({info.vendor_id, info.product_code, info.revision_number});
  }
  return arguments.descriptions.empty() ? "" : adapt::adaptHint(arguments.descriptions, keys);
}

void printJson(const ScanArguments& arguments, const std::vector<SeenSlave>& slaves,
               const std::string& hint) {
  auto list = nlohmann::ordered_json::array();
  for (const auto& slave : slaves)
    list.push_back(seenJson(slave, !arguments.descriptions.empty()));
  nlohmann::ordered_json json = {{"master", arguments.master}, {"slaves", list}};
  if (!hint.empty())
    json["hint"] = hint;
  std::printf("%s\n", json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

void printText(const ScanArguments& arguments, const std::vector<SeenSlave>& slaves,
               const std::string& hint) {
  printSeen(slaves, !arguments.descriptions.empty());
  if (!hint.empty())
    std::printf("%s\n", hint.c_str());
}

Status scan(const ScanArguments& arguments) {
  std::vector<HiddenDevice> hidden;
  const auto devices = loadDevices(arguments.descriptions, &hidden);
  const BusChoice bus(arguments, devices);
  const OpenedMaster master(arguments.master);
  const DeviceFile file(arguments.master);
  std::vector<SeenSlave> slaves;
  for (const auto& found : master.slaves(devices)) {
    slaves.push_back({found, describedRevisions(found.info, devices, hidden), {}, {}});
    const Patience patience;
    if (arguments.verbose)
      slaves.back().details = readDetails(file, found.info.position);
    if (arguments.pdos)
      slaves.back().syncManagers = master.syncManagers(found);
  }
  const auto print = arguments.json ? printJson : printText;
  print(arguments, slaves, hintFor(arguments, slaves));
  return success;
}

} // namespace

void addScanCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "scan",
                             "List the slaves on the bus, and with --eni their descriptions; works beside a "
                             "running application");
  const auto arguments = std::make_shared<ScanArguments>();
  command->add_flag("-v,--verbose", arguments->verbose,
                    "Identity, alias, state and error, ports, clock and mailbox of each slave");
  command->add_flag("--pdos", arguments->pdos,
                    "Sync managers, PDOs and entries that each slave itself offers");
  command->add_flag("--json", arguments->json, "The same as JSON");
  addBusOptions(*command, *arguments, false);
  command->callback([arguments, &action] { action = [arguments] { return scan(*arguments); }; });
}

} // namespace igh_bus
