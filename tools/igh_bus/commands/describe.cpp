// igh_bus describe: what the loader makes of each description file.
#include "adapt/Hint.h"
#include "commands/commands.h"
#include "descriptions/Complaints.h"
#include "descriptions/Descriptions.h"
#include "text/Text.h"

#include <cstdio>

namespace igh_bus {
namespace {

void printEntries(const Device& device) {
  std::printf("  entries: %zu\n", device.entryCount());
  if (device.entryCount() + device.unreadCount() == 0)
    return;
  std::printf("    %-10s  %4s  %-8s  %-3s  %2s  %-6s  %s\n", "OBJECT", "BITS", "TYPE", "DIR", "SM", "PDO",
              "NAME");
  forEachEntry(device, [](const SyncManager& syncManager, const Pdo& pdo, const Entry& entry) {
    const std::string object = entry.gap() ? "gap" : objectText(entry);
    const std::string name = entry.gap() && entry.name.empty() ? "" : '"' + entry.name + '"';
    std::printf("    %-10s  %4u  %-8s  %-3s  %2u  0x%04X  %s\n", object.c_str(), unsigned{entry.bitLength},
                entry.type.empty() ? "-" : entry.type.c_str(), syncManager.output ? "out" : "in",
                unsigned{syncManager.index}, unsigned{pdo.index}, name.c_str());
  });
}

// What the library makes of the five values when it configures the slave.
std::string usedClock(const CSlaveENIObject::_DCOPMODEINFO& mode) {
  if (mode.assignActivate == 0)
    return "not used: assign-activate is 0";
  const bool ofPeriod = mode.cycleTimeSync0 == 0;
  const std::string cycle = ofPeriod ? "of the period" : format("%u ns", mode.cycleTimeSync0);
  std::string shift = format("%d ns", mode.shiftTimeSync0);
  if (mode.shiftTimeSync0 == 0)
    shift = ofPeriod ? "of half the period" : format("%u ns", mode.cycleTimeSync0 / 2);
  return "the slave is given SYNC0 cycle " + cycle + " shift " + shift +
         format(", SYNC1 cycle %u ns shift %d ns", mode.cycleTimeSync1, mode.shiftTimeSync1);
}

void printClockModes(const Device& device) {
  std::printf("  clock modes: %zu\n", device.clockModes.size());
  for (const auto& [name, mode] : device.clockModes) {
    std::printf(
        "    \"%s\": assign-activate 0x%04X, SYNC0 cycle %u ns shift %d ns, SYNC1 cycle %u ns shift %d ns\n",
        name.c_str(), unsigned{mode.assignActivate}, mode.cycleTimeSync0, mode.shiftTimeSync0,
        mode.cycleTimeSync1, mode.shiftTimeSync1);
    std::printf("      %s\n", name == "DC" ? usedClock(mode).c_str() : "not used: only \"DC\" is");
  }
}

void printDevice(const Device& device) {
  std::printf("\nDevice \"%s\"\n", device.typeName.c_str());
  std::printf("  product code 0x%08X, revision 0x%08X\n", device.key.productCode, device.key.revision);
  std::printf("  slots: %u, increments: index 0x%X, PDO 0x%X\n", device.slots, device.slotIndexIncrement,
              device.slotPdoIncrement);
  printClockModes(device);
  printEntries(device);
}

void printMessages(const std::vector<Message>& messages) {
  static const char* const levels[] = {"error", "note", "oddity", "detail"};
  std::printf("\nMessages of the loader (the library prints errors and keeps the rest quiet):\n");
  for (const auto& message : messages) {
    const std::string repeated = message.count > 1 ? format("  (%u times)", message.count) : "";
    std::printf("  %u %-6s  %s%s\n", message.level, message.level < 4 ? levels[message.level] : "?",
                message.text.c_str(), repeated.c_str());
  }
}

// Refused modules belong to no device; only the messages tell of them.
void printModuleWords(const std::vector<Message>& messages) {
  for (const auto& [level, text, count] : messages) {
    if (text == "Module type id and name id can not be empty.")
      std::printf(
          "  %u modules are left out: their Type lacks a ModuleIdent or their Name an LcId; slots that name "
          "them stay empty\n",
          count);
    if (text == "Device RxPDO has no sm channel.")
      std::printf("  %u PDOs of modules have no sync manager and are left out\n", count);
  }
}

void printHidden(const std::vector<HiddenDevice>& hidden) {
  if (!hidden.empty())
    std::printf("  devices that a HideType of this file takes out, so that slaves of these revisions get no "
                "description from it: %zu\n",
                hidden.size());
  for (const auto& device : hidden) {
    std::string by;
    for (const auto& [typeName, revision] : device.by)
      by += (by.empty() ? "" : ", ") + format("\"%s\" revision 0x%08X", typeName.c_str(), revision);
    std::printf("    - \"%s\" 0x%08X revision 0x%08X, hidden by %s\n", device.typeName.c_str(),
                device.key.productCode, device.key.revision, by.c_str());
  }
}

void printPlainWords(const FileReport& report) {
  std::printf("\nIn plain words:\n");
  if (report.devices.empty())
    std::printf("  the file adds no device\n");
  printModuleWords(report.messages);
  printHidden(report.hidden);
  for (const auto& device : report.devices) {
    const auto complaints = complaintsAbout(device);
    std::printf("  \"%s\" 0x%08X revision 0x%08X%s\n", device.typeName.c_str(), device.key.productCode,
                device.key.revision, complaints.empty() ? ": everything can be used" : "");
    for (const auto& complaint : complaints) {
      std::printf("    - %s\n", complaint.reason.c_str());
      for (const auto& place : complaint.places)
        std::printf("        %s\n", place.c_str());
    }
  }
}

Status describe(const std::vector<std::string>& paths) {
  Descriptions descriptions;
  Status status = success;
  for (const auto& path : paths) {
    const auto report = descriptions.load(path);
    if (!report.loaded) {
      std::fflush(stdout);
      std::fprintf(stderr, "igh_bus: %s\n", report.reason.c_str());
      status = notLoaded;
      continue;
    }
    std::printf("%s\nVendor 0x%08X \"%s\"\n", path.c_str(), report.vendorId, report.vendorName.c_str());
    for (const auto& device : report.devices)
      printDevice(device);
    printMessages(report.messages);
    printPlainWords(report);
    const auto hint = adapt::adaptHint({path});
    if (!hint.empty())
      std::printf("  %s\n", hint.c_str());
    std::printf("\n");
  }
  return status;
}

} // namespace

void addDescribeCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "describe", "Show what is loaded from description files");
  const auto paths = std::make_shared<std::vector<std::string>>();
  command->add_option("FILE", *paths, "Description files (XML)")->required();
  command->callback([paths, &action] { action = [paths] { return describe(*paths); }; });
}

} // namespace igh_bus
