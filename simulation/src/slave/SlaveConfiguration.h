// What the application wants of the slave at one place: its PDOs, its FMMUs and, once the slave carries them,
// its process data. The memory of the process data is here, so that a slave that comes back costs no
// allocation.
#ifndef ETHERCAT_SIMULATION_SLAVE_CONFIGURATION_H
#define ETHERCAT_SIMULATION_SLAVE_CONFIGURATION_H

#include "slave/SdoRequest.h"
#include "slave/SlaveUnit.h"

namespace ethercat_simulation {

class Domain;
class Master;

// A whole sync manager in a domain.
struct Fmmu {
  const Domain* domain;
  unsigned int syncManager;
  ec_direction_t direction;
  std::size_t offset; // in the domain, bytes
  std::size_t size;
};

class SlaveConfiguration {
public:
  SlaveConfiguration(Master& owner, std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                     std::uint32_t productCode)
      : m_owner(owner), m_alias(alias), m_position(position), m_vendorId(vendorId),
        m_productCode(productCode) {}

  Master& master() const { return m_owner; }
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
  // Finds the entry and reserves its sync manager in the domain. Byte offset in the domain, or -ENOENT,
  // -EOVERFLOW.
  int registerEntry(std::uint16_t index, std::uint8_t subindex, Domain& domain, unsigned int* bitPosition);

  SdoRequest& createSdoRequest(const SdoPlace& place, std::size_t size) {
    return m_sdoRequests.add(*this, place, size);
  }
  void stepSdoRequests(const SdoPace& pace, Moment now) { m_sdoRequests.step(m_unit, pace, now); }
  bool hasBusySdoRequest() const { return m_sdoRequests.isAnyBusy(); }

  // Writes the PDOs to the slave. 0, or the AL status code with which it refuses SAFEOP then.
  std::uint16_t writeTo(SlaveUnit& unit) const;

  // Activation: makes room for the bytes of every sync manager.
  void allocateProcessData();
  // The slave has been told its FMMUs; from now on it answers in this configuration's name.
  void bindProcessData(SlaveUnit* unit);
  SlaveUnit* answering() const {
    return m_answering != nullptr && m_answering->written() == this && m_answering->exchanges() ? m_answering
                                                                                                : nullptr;
  }
  // The slave makes its inputs, once per frame: `frame` tells one from the next.
  void produceInputs(std::uint64_t frame);
  // The slave has taken output bytes from a frame.
  void noteOutputs() { m_freshOutputs = true; }
  // Carries the outputs into the objects that they map. False when none have come since the last call, or
  // the bytes are not this slave's.
  bool takeObjects(const SlaveUnit& unit);
  void describeFmmus(std::vector<FmmuPlace>& places) const;
  std::uint8_t* processData(const Fmmu& fmmu);
  const std::vector<std::uint8_t>& outputs() const { return m_outputs; }

private:
  struct EntryPlace {
    std::size_t bit;
    Entry entry;
    std::vector<std::uint8_t>* object; // of a drive; null when it has no such object
  };

  std::vector<Entry> defaultEntries(std::uint16_t pdoIndex) const;
  Pdo* findPdo(std::uint16_t index);
  int reserve(Domain& domain, unsigned int syncManager);
  void placeEntries(unsigned int manager, std::size_t start, std::vector<EntryPlace>& entries) const;
  void findObjects(SlaveUnit& unit);
  void produceObjects();

  Master& m_owner;
  std::uint16_t m_alias;
  std::uint16_t m_position;
  std::uint32_t m_vendorId;
  std::uint32_t m_productCode;
  SlaveUnit* m_unit = nullptr;
  unsigned int m_ringPosition = 0;
  SyncManagerPlans m_plans;
  std::vector<Fmmu> m_fmmus;
  SdoQueue m_sdoRequests;

  SlaveUnit* m_answering = nullptr;
  std::vector<std::uint8_t> m_outputs;
  std::vector<std::uint8_t> m_inputs;
  std::array<std::size_t, SYNC_MANAGER_COUNT> m_outputStart{};
  std::array<std::size_t, SYNC_MANAGER_COUNT> m_inputStart{};
  std::vector<EntryPlace> m_outputEntries;
  std::vector<EntryPlace> m_inputEntries;
  bool m_freshOutputs = false;
  std::uint64_t m_lastFrame = 0;
  std::uint64_t m_frames = 0;
};

} // namespace ethercat_simulation

#endif
