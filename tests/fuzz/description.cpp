// The input as a description file: loads it, compares what the store tells in two ways, and runs its devices
// on a bus made of them.
#include "ENIObject/ENIObject.h"
#include "Support.h"

#include <ethercat_simulation/Simulation.h>
#include <igh_master.h>

namespace {

namespace sim = ethercat_simulation;

constexpr unsigned int mostEntries = 500; // on the bus; a file may expand to millions

bool swallow(unsigned int /*level*/, const char* /*text*/) {
  return true;
}

std::string nameOf(const CSlaveENIObject& description, unsigned long position) {
  unsigned long size = 0;
  REQUIRE(description.getPDOEntryName(static_cast<unsigned int>(position), nullptr, size));
  std::string name(size, '\0');
  REQUIRE(description.getPDOEntryName(static_cast<unsigned int>(position), name.data(), size));
  name.pop_back();
  return name;
}

void compareIndexes(const CSlaveENIObject& description) {
  for (unsigned int position = 0; position < description.getSlavePDOEntryCount(); ++position) {
    const std::string name = nameOf(description, position);
    unsigned long named = 0; // the last of this name
    const ec_pdo_entry_reg_t* const row = description.getSlavePDOEntryReg(name.c_str(), named);
    REQUIRE(row == description.getSlavePDOEntryReg() + named);
    REQUIRE(named >= position && nameOf(description, named) == name);
  }
}

sim::Slave slaveOf(const CSlaveENIObject& description) {
  sim::Slave slave;
  slave.vendorId = description.getVendorId();
  slave.productCode = description.getProductCode();
  slave.revisionNumber = description.getRevisionCode();
  for (const ec_sync_info_t* sync = description.getSlaveSyncInfo(); sync->index != 0xFF; ++sync) {
    const auto direction = sync->dir == EC_DIR_OUTPUT ? sim::Direction::output : sim::Direction::input;
    slave.defaultMapping.push_back({sync->index, direction, {}});
    for (const ec_pdo_info_t* pdo = sync->pdos; pdo != sync->pdos + sync->n_pdos; ++pdo) {
      slave.defaultMapping.back().pdos.push_back({pdo->index, {}});
      for (const ec_pdo_entry_info_t* entry = pdo->entries; entry != pdo->entries + pdo->n_entries; ++entry) {
        slave.defaultMapping.back().pdos.back().entries.push_back(
            {entry->index, entry->subindex, entry->bit_length});
      }
    }
  }
  return slave;
}

void useEntry(std::uint32_t slave, const std::string& name, bool read) {
  std::uint32_t handle = 0;
  double value = 1;
  if (igh_master_create_pdo_info(0, slave, name.c_str(), read, &handle)) {
    REQUIRE(read ? igh_master_pdo_recv(0, handle, &value) : igh_master_pdo_send(0, handle, value));
  }
}

void runBus(const char* path, const std::vector<const CSlaveENIObject*>& devices) {
  sim::bus(0).setTiming(sim::Timing::fast);
  igh_master_initialize(0, 1000000, false);
  REQUIRE(igh_master_append_eni(0, path));
  igh_master_scan(0, nullptr);
  igh_master_config_all_slave(0);
  for (std::uint32_t slave = 0; slave < devices.size(); ++slave) {
    std::uint32_t number = 0;
    REQUIRE(igh_master_get_slot_number(0, slave, &number) && number == devices[slave]->getSlotNumber());
    for (unsigned int entry = 0; entry < devices[slave]->getSlavePDOEntryCount(); ++entry) {
      useEntry(slave, nameOf(*devices[slave], entry), entry % 2 == 0);
    }
  }
  const bool active = igh_master_active(0);
  for (int cycle = 0; active && cycle < 30; ++cycle) {
    igh_master_exchange(0, nullptr, nullptr);
  }
  igh_master_uninitialize(0);
  REQUIRE(sim::bus(0).misuse().total() == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  file.fill(data, size);
  sim::reset();
  CMasterENIObject store(swallow);
  store.insertENIFile(file.path(), false);
  std::vector<const CSlaveENIObject*> devices;
  unsigned int entries = 0;
  for (const auto& [vendorId, vendor] : store.getVendors()) {
    for (const auto& [productCode, product] : vendor.mapProduct) {
      for (const auto& [revision, description] : product.mapRevision) {
        compareIndexes(*description);
        entries += description->getSlavePDOEntryCount();
        devices.push_back(description);
        sim::bus(0).addSlave(slaveOf(*description));
      }
    }
  }
  if (!devices.empty() && devices.size() <= 255 && entries <= mostEntries) {
    runBus(file.path(), devices);
  }
  return 0;
}
