#include "adapt/RevisionChoice.h"

#include <set>

namespace igh_bus::adapt {
namespace {

bool ofProduct(const SourceDevice& device, const DeviceKey& key) {
  return device.key.vendorId == key.vendorId && device.key.productCode == key.productCode;
}

// Small is good; those above the wanted one come behind all that are as near below it.
std::uint64_t distance(std::uint32_t revision, std::uint32_t wanted) {
  return revision <= wanted ? 2 * (std::uint64_t{wanted} - revision)
                            : 2 * (std::uint64_t{revision} - wanted) + 1;
}

} // namespace

const SourceDevice* chooseRevision(const std::vector<SourceDevice>& devices, const DeviceKey& key,
                                   RevisionRule rule) {
  const SourceDevice* best = nullptr;
  for (const auto& device : devices) {
    const auto revision = device.key.revision;
    const bool allowed = revision == key.revision || rule == RevisionRule::ANY ||
                         (rule == RevisionRule::OLDER && revision < key.revision);
    if (ofProduct(device, key) && allowed &&
        (!best || distance(revision, key.revision) < distance(best->key.revision, key.revision)))
      best = &device;
  }
  return best;
}

std::vector<std::uint32_t> describedRevisions(const std::vector<SourceDevice>& devices,
                                              const DeviceKey& key) {
  std::set<std::uint32_t> revisions;
  for (const auto& device : devices) {
    if (ofProduct(device, key))
      revisions.insert(device.key.revision);
  }
  return {revisions.begin(), revisions.end()};
}

} // namespace igh_bus::adapt
