// ecrt_open_master, and what it is for: what the master knows of its slaves, also while somebody else holds
// it.
#include "interface/Invoke.h"
#include "slave/SlaveMemory.h"

#include <cstdio>

using namespace ethercat_simulation;

namespace {

// Runs read(slave) on the slave of this position as the last scan found it.
template <class Read>
int ofSlave(Call call, ec_master_t* master, std::uint16_t position, const std::string& place, Read read) {
  const auto work = [&](Master& held) {
    held.catchUp();
    const SlaveUnit* unit = held.topology().listed(position);
    return unit != nullptr ? read(unit->identity()) : -EINVAL;
  };
  return invoke<Master>(call, master, BAD_HANDLE_RESULT, work,
                        [&](const Master&) { return std::to_string(position) + place; });
}

std::string placeOf(std::initializer_list<unsigned int> numbers) {
  std::string text;
  for (const unsigned int number : numbers) {
    text += ", " + std::to_string(number);
  }
  return text;
}

} // namespace

ec_master_t* ecrt_open_master(unsigned int master_index) {
  return takeMaster(Call::openMaster, master_index, [](Master& master) {
    return static_cast<ec_master_t*>(Handles::instance().createOpened(master));
  });
}

int ecrt_master_get_sync_manager(ec_master_t* master, uint16_t slave_position, uint8_t sync_index,
                                 ec_sync_info_t* sync) {
  return ofSlave(Call::getSyncManager, master, slave_position, placeOf({sync_index}),
                 [&](const Slave& slave) { return readSyncManager(slave, sync_index, *sync); });
}

int ecrt_master_get_pdo(ec_master_t* master, uint16_t slave_position, uint8_t sync_index, uint16_t pos,
                        ec_pdo_info_t* pdo) {
  return ofSlave(Call::getPdo, master, slave_position, placeOf({sync_index, pos}),
                 [&](const Slave& slave) { return readPdo(slave, sync_index, pos, *pdo); });
}

int ecrt_master_get_pdo_entry(ec_master_t* master, uint16_t slave_position, uint8_t sync_index,
                              uint16_t pdo_pos, uint16_t entry_pos, ec_pdo_entry_info_t* entry) {
  return ofSlave(
      Call::getPdoEntry, master, slave_position, placeOf({sync_index, pdo_pos, entry_pos}),
      [&](const Slave& slave) { return readPdoEntry(slave, sync_index, pdo_pos, entry_pos, *entry); });
}
