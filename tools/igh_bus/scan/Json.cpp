#include "bus/SlaveList.h"
#include "scan/SeenSlave.h"

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

// The keys are those of bus files, where these have one.
Json pdosJson(const std::vector<SyncManager>& syncManagers) {
  Json list = Json::array();
  for (const auto& syncManager : syncManagers) {
    Json pdos = Json::array();
    for (const auto& pdo : syncManager.pdos) {
      Json entries = Json::array();
      for (const auto& entry : pdo.entries)
        entries.push_back(
            {{"index", entry.index}, {"subindex", entry.subindex}, {"bit_length", entry.bitLength}});
      pdos.push_back({{"index", pdo.index}, {"entries", entries}});
    }
    list.push_back({{"index", syncManager.index},
                    {"direction", syncManager.output ? "output" : "input"},
                    {"pdos", pdos}});
  }
  return list;
}

Json portsJson(const ec_slave_info_t& info) {
  Json ports = Json::array();
  for (const auto& port : info.ports)
    ports.push_back({{"kind", portText(port.desc)},
                     {"link_up", port.link.link_up != 0},
                     {"loop_closed", port.link.loop_closed != 0},
                     {"signal", port.link.signal_detected != 0},
                     {"next_slave", port.next_slave == 0xFFFF ? Json() : Json(port.next_slave)}});
  return ports;
}

} // namespace

Json seenJson(const SeenSlave& slave, bool described) {
  const auto& [info, device] = slave.found;
  Json json = {{"position", info.position},
               {"alias", info.alias},
               {"name", info.name},
               {"vendor_id", info.vendor_id},
               {"product_code", info.product_code},
               {"revision", info.revision_number},
               {"serial", info.serial_number},
               {"al_state", slaveStateText(info.al_state & 0xFU)},
               {"al_error", (info.al_state & 0x10U) != 0},
               {"error_flag", info.error_flag != 0}};
  if (described)
    json["description"] = device ? Json(device->typeName) : Json();
  if (described && !device) {
    json["described_revisions"] = Json::array();
    for (const auto& [revision, hidden] : slave.revisions)
      json["described_revisions"].push_back({{"revision", revision}, {"hidden", hidden}});
  }
  if (slave.details) {
    const auto& details = *slave.details;
    json["al_status_code"] = details.alStatusCode ? Json(*details.alStatusCode) : Json();
    json["ports"] = portsJson(info);
    json["clock_bits"] = details.clockBits ? Json(*details.clockBits) : Json();
    json["mailbox"] = details.mailboxProtocols ? Json(*details.mailboxProtocols) : Json();
    json["current_on_ebus"] = info.current_on_ebus;
  }
  if (slave.syncManagers)
    json["sync_managers"] = pdosJson(*slave.syncManagers);
  return json;
}

} // namespace igh_bus
