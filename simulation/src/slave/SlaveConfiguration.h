// What the application wants of the slave at one place: its PDOs, its FMMUs, its SDO requests and, once the
// slave carries them, its process data.
#ifndef ETHERCAT_SIMULATION_SLAVE_CONFIGURATION_H
#define ETHERCAT_SIMULATION_SLAVE_CONFIGURATION_H

#include "slave/ProcessData.h"
#include "slave/SdoQueue.h"
#include "slave/SlaveUnit.h"

namespace ethercat_simulation {

// Where an entry lies in the PDOs of a configuration.
struct EntryPosition {
  unsigned int syncManager;
  std::size_t bit; // in the sync manager
};

class SlaveConfiguration {
public:
  SlaveConfiguration(unsigned int master, std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                     std::uint32_t productCode)
      : m_master(master), m_alias(alias), m_position(position), m_vendorId(vendorId),
        m_productCode(productCode) {}

  bool describes(std::uint32_t vendorId, std::uint32_t productCode) const {
    return m_vendorId == vendorId && m_productCode == productCode;
  }
  std::uint16_t alias() const { return m_alias; }
  std::uint16_t position() const { return m_position; }
  std::string place() const { return std::to_string(m_alias) + ":" + std::to_string(m_position); }

  // The slave that it belongs to since the last scan, null while offline.
  SlaveUnit* unit() const { return m_unit; }
  void attach(SlaveUnit* unit, unsigned int ringPosition);
  void detach() { m_unit = nullptr; }
  void state(ec_slave_config_state_t& state) const;

  void loadDefaultMapping();
  int configurePdos(unsigned int count, const ec_sync_info_t* syncs);
  // False when no PDO has this entry.
  bool find(std::uint16_t index, std::uint8_t subindex, EntryPosition& position) const;
  // Null when the sync manager is not in this domain.
  const Fmmu* fmmu(unsigned int domain, unsigned int syncManager) const;
  // Puts a sync manager into a domain. Null when the slave has no FMMU left.
  const Fmmu* addFmmu(unsigned int domain, unsigned int syncManager, std::size_t offset);
  void describeFmmus(std::vector<FmmuPlace>& places) const;

  SdoRequest& createSdoRequest(const SdoPlace& place, std::size_t size) {
    return m_sdoRequests.add(this->place(), place, size);
  }
  void stepSdoRequests(const SdoPace& pace, Moment now) { m_sdoRequests.step(m_unit, pace, now); }
  bool hasBusySdoRequest() const { return m_sdoRequests.isAnyBusy(); }

  // Writes the PDOs to the slave. 0, or the AL status code with which it refuses SAFEOP then.
  std::uint16_t writeTo(SlaveUnit& unit) const;

  // Activation: makes room for the bytes of every sync manager.
  void allocateProcessData() { m_processData.allocate(m_plans, m_fmmus); }
  ProcessData& processData() { return m_processData; }
  // The slave that has been told its FMMUs, and answers in this configuration's name now.
  SlaveUnit* answering() const {
    SlaveUnit* unit = m_processData.unit();
    return unit != nullptr && unit->written() == this && unit->exchanges() ? unit : nullptr;
  }

private:
  std::vector<Entry> defaultEntries(std::uint16_t pdoIndex) const;
  Pdo* findPdo(std::uint16_t index);

  unsigned int m_master; // its index
  std::uint16_t m_alias;
  std::uint16_t m_position;
  std::uint32_t m_vendorId;
  std::uint32_t m_productCode;
  SlaveUnit* m_unit = nullptr;
  unsigned int m_ringPosition = 0;
  SyncManagerPlans m_plans;
  std::vector<Fmmu> m_fmmus;
  SdoQueue m_sdoRequests;
  ProcessData m_processData;
};

} // namespace ethercat_simulation

#endif
