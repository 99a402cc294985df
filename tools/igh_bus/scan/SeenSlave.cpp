#include "scan/SeenSlave.h"

namespace igh_bus {

std::vector<DescribedRevision> describedRevisions(const ec_slave_info_t& slave,
                                                  const std::vector<Device>& devices,
                                                  const std::vector<HiddenDevice>& hidden) {
  std::vector<DescribedRevision> revisions;
  const auto add = [&](const DeviceKey& key, bool isHidden) {
    if (key.vendorId == slave.vendor_id && key.productCode == slave.product_code)
      revisions.push_back({key.revision, isHidden});
  };
  for (const auto& device : devices)
    add(device.key, false);
  for (const auto& device : hidden)
    add(device.key, true);
  return revisions;
}

const char* portText(ec_slave_port_desc_t kind) {
  static constexpr const char* KINDS[] = {"not there", "not configured", "EBUS", "MII"};
  const auto index = static_cast<unsigned int>(kind);
  return index < std::size(KINDS) ? KINDS[index] : "unknown";
}

} // namespace igh_bus
