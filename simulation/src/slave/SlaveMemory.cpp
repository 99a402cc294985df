#include "slave/SlaveMemory.h"

#include <algorithm>
#include <cerrno>

namespace ethercat_simulation {

namespace {

constexpr std::uint8_t MAILBOX_SYNC_MANAGERS = 2; // 0 out, 1 in

const SyncManager* find(const Slave& slave, unsigned int index) {
  const auto& all = slave.defaultMapping;
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const SyncManager& manager) { return manager.index == index; });
  return found != all.end() ? &*found : nullptr;
}

const Pdo* find(const Slave& slave, unsigned int syncManager, std::size_t place) {
  const SyncManager* manager = find(slave, syncManager);
  return manager != nullptr && place < manager->pdos.size() ? &manager->pdos[place] : nullptr;
}

void put(SiiWords& words, std::size_t place, std::uint32_t value) {
  words[place] = static_cast<std::uint16_t>(value);
  words[place + 1] = static_cast<std::uint16_t>(value >> 16U);
}

} // namespace

std::uint8_t syncManagerCount(const Slave& slave) {
  std::uint8_t count = slave.coe ? MAILBOX_SYNC_MANAGERS : 0;
  for (const SyncManager& manager : slave.defaultMapping) {
    count = std::max(count, static_cast<std::uint8_t>(manager.index + 1));
  }
  return count;
}

int readSyncManager(const Slave& slave, unsigned int index, ec_sync_info_t& info) {
  if (index >= SYNC_MANAGER_COUNT) {
    return -ENOENT;
  }
  if (index >= syncManagerCount(slave)) {
    return -EINVAL;
  }
  const SyncManager* manager = find(slave, index);
  const bool output = manager != nullptr ? manager->direction == Direction::output : index == 0;
  info = {static_cast<std::uint8_t>(index), output ? EC_DIR_OUTPUT : EC_DIR_INPUT,
          manager != nullptr ? static_cast<unsigned int>(manager->pdos.size()) : 0U, nullptr, EC_WD_DISABLE};
  return 0;
}

int readPdo(const Slave& slave, unsigned int syncManager, std::size_t place, ec_pdo_info_t& info) {
  const Pdo* pdo = find(slave, syncManager, place);
  if (pdo == nullptr) {
    return syncManager < SYNC_MANAGER_COUNT ? -EINVAL : -ENOENT;
  }
  info = {pdo->index, static_cast<unsigned int>(pdo->entries.size()), nullptr};
  return 0;
}

int readPdoEntry(const Slave& slave, unsigned int syncManager, std::size_t pdo, std::size_t place,
                 ec_pdo_entry_info_t& info) {
  const Pdo* own = find(slave, syncManager, pdo);
  if (own == nullptr || place >= own->entries.size()) {
    return syncManager < SYNC_MANAGER_COUNT ? -EINVAL : -ENOENT;
  }
  const Entry& entry = own->entries[place];
  info = {entry.index, entry.subindex, entry.bitLength};
  return 0;
}

SiiWords siiWords(const Slave& slave) {
  constexpr std::uint16_t COE = 0x04;
  SiiWords words{};
  words[0x04] = slave.alias;
  put(words, 0x08, slave.vendorId);
  put(words, 0x0A, slave.productCode);
  put(words, 0x0C, slave.revisionNumber);
  put(words, 0x0E, slave.serialNumber);
  words[0x1C] = slave.coe ? COE : 0; // mailbox protocols
  return words;
}

} // namespace ethercat_simulation
