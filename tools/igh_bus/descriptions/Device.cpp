#include "descriptions/Device.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

namespace igh_bus {

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

unsigned int convertedBytes(const std::string& type) {
  return CEthercatDataHelper::getTypeSize(CEthercatDataHelper::getTypeByName(type.c_str()));
}

} // namespace igh_bus
