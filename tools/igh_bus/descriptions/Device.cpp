#include "descriptions/Device.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <algorithm>

namespace igh_bus {
namespace {

bool before(const DescribedObject& one, const DescribedObject& other) {
  return std::tie(one.index, one.subindex) < std::tie(other.index, other.subindex);
}

} // namespace

std::size_t Device::entryCount() const {
  std::size_t count = 0;
  forEachEntry(*this,
               [&](const SyncManager&, const Pdo&, const Entry& entry) { count += entry.gap() ? 0 : 1; });
  return count;
}

std::size_t Device::unreadCount() const {
  std::size_t count = 0;
  forEachEntry(*this,
               [&](const SyncManager&, const Pdo&, const Entry& entry) { count += entry.unread() ? 1 : 0; });
  return count;
}

NamedEntry findEntry(const Device& device, const std::string& name) {
  NamedEntry found;
  forEachEntry(device, [&](const SyncManager& syncManager, const Pdo&, const Entry& entry) {
    if (entry.name == name)
      found = {&entry, syncManager.output};
  });
  return found;
}

std::vector<DescribedObject> describedObjects(const Device& device) {
  auto objects = device.markup.objects;
  forEachEntry(device, [&](const SyncManager&, const Pdo&, const Entry& entry) {
    if (!entry.gap())
      objects.push_back({entry.index, entry.subindex, entry.name, entry.type});
  });
  std::stable_sort(objects.begin(), objects.end(), before);
  objects.erase(std::unique(objects.begin(), objects.end(),
                            [](const auto& one, const auto& other) { return !before(one, other); }),
                objects.end());
  return objects;
}

unsigned int convertedBytes(const std::string& type) {
  return CEthercatDataHelper::getTypeSize(CEthercatDataHelper::getTypeByName(type.c_str()));
}

} // namespace igh_bus
