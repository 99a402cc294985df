#include "text/Text.h"
#include "bus/SlaveList.h"
#include "descriptions/Complaints.h"
#include "scan/AlStatusCodes.h"
#include "scan/SeenSlave.h"

#include <cstdio>

namespace igh_bus {
namespace {

std::string revisionsText(const std::vector<DescribedRevision>& revisions) {
  std::string text;
  for (const auto& [revision, hidden] : revisions)
    text +=
        (text.empty() ? "" : ", ") + format("0x%08X", revision) + (hidden ? " (hidden by a HideType)" : "");
  return text.empty() ? "none" : text;
}

void printUnmatched(const SeenSlave& slave) {
  const auto& info = slave.found.info;
  std::printf(
      "slave %u has no description: vendor 0x%08X, product 0x%08X, revision 0x%08X; described revisions "
      "of this product: %s\n",
      unsigned{info.position}, info.vendor_id, info.product_code, info.revision_number,
      revisionsText(slave.revisions).c_str());
}

void printPorts(const ec_slave_info_t& info) {
  constexpr unsigned int NONE = 0xFFFF;
  for (std::size_t i = 0; i < EC_MAX_PORTS; ++i) {
    const auto& port = info.ports[i];
    if (port.desc == EC_PORT_NOT_IMPLEMENTED)
      continue;
    const std::string next =
        port.next_slave == NONE ? "" : format(", to slave %u", unsigned{port.next_slave});
    std::printf("    port %zu             %s, link %s, loop %s, signal %s%s\n", i, portText(port.desc),
                port.link.link_up ? "up" : "down", port.link.loop_closed ? "closed" : "open",
                port.link.signal_detected ? "yes" : "no", next.c_str());
  }
}

std::string clockText(const SlaveDetails& details) {
  if (!details.clockBits)
    return "unknown";
  return *details.clockBits == 0 ? "no" : format("yes, %u bits", *details.clockBits);
}

std::string mailboxText(const SlaveDetails& details) {
  if (!details.mailboxProtocols)
    return "unknown";
  std::string text;
  for (const auto& name : *details.mailboxProtocols)
    text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

void printDetails(const ec_slave_info_t& info, const SlaveDetails& details) {
  std::printf("    vendor             0x%08X\n    product            0x%08X\n    revision           0x%08X\n"
              "    serial number      0x%08X\n    alias              %u\n",
              info.vendor_id, info.product_code, info.revision_number, info.serial_number,
              unsigned{info.alias});
  const std::string error = details.alStatusCode
                                ? format("AL status code 0x%04X: ", unsigned{*details.alStatusCode}) +
                                      alStatusText(*details.alStatusCode)
                                : "AL status code unknown";
  std::printf("    state              %s, %s\n", slaveStateText(info.al_state).c_str(), error.c_str());
  printPorts(info);
  std::printf("    distributed clock  %s\n    mailbox            %s\n    E-bus current      %d mA\n",
              clockText(details).c_str(), mailboxText(details).c_str(), int{info.current_on_ebus});
}

void printPdos(const std::vector<SyncManager>& syncManagers) {
  for (const auto& syncManager : syncManagers) {
    std::printf("    SM%u %s\n", unsigned{syncManager.index}, syncManager.output ? "output" : "input");
    for (const auto& pdo : syncManager.pdos) {
      std::printf("      PDO 0x%04X\n", unsigned{pdo.index});
      for (const auto& entry : pdo.entries)
        std::printf("        %-9s  %3u bits\n", entry.gap() ? "gap" : objectText(entry).c_str(),
                    unsigned{entry.bitLength});
    }
  }
}

} // namespace

void printSeen(const std::vector<SeenSlave>& slaves, bool described) {
  std::vector<FoundSlave> found;
  found.reserve(slaves.size());
  for (const auto& slave : slaves)
    found.push_back(slave.found);
  const auto lines = slaveLines(found, described);
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    std::printf("%s\n", lines[i].c_str());
    if (slaves[i].details)
      printDetails(found[i].info, *slaves[i].details);
    if (slaves[i].syncManagers)
      printPdos(*slaves[i].syncManagers);
  }
  for (const auto& slave : slaves) {
    if (described && !slave.found.device)
      printUnmatched(slave);
  }
  printAliases(found);
}

} // namespace igh_bus
