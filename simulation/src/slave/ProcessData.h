// The bytes behind the sync managers of one configuration, and how its slave fills and takes them. The memory
// stays with the configuration, so that a slave that comes back costs no allocation.
#ifndef ETHERCAT_SIMULATION_PROCESS_DATA_H
#define ETHERCAT_SIMULATION_PROCESS_DATA_H

#include "slave/SlavePdos.h"

namespace ethercat_simulation {

class SlaveUnit;

// A whole sync manager in a domain.
struct Fmmu {
  unsigned int domain; // its number
  unsigned int syncManager;
  ec_direction_t direction;
  std::size_t offset; // in the domain, bytes
  std::size_t size;
};

// The same as the slave knows it.
struct FmmuPlace {
  unsigned int domain;
  unsigned int syncManager;
  std::size_t offset;
  std::size_t size;
  bool operator==(const FmmuPlace& other) const {
    return domain == other.domain && syncManager == other.syncManager && offset == other.offset &&
           size == other.size;
  }
};

class ProcessData {
public:
  // Activation: makes room for the bytes of every sync manager.
  void allocate(const SyncManagerPlans& plans, const std::vector<Fmmu>& fmmus);
  // This slave fills and takes them from now on.
  void bind(SlaveUnit& unit);
  SlaveUnit* unit() const { return m_unit; }

  // The slave makes its inputs, once per frame: `frame` tells one from the next.
  void produceInputs(std::uint64_t frame);
  // The slave has taken output bytes from a frame.
  void noteOutputs() { m_freshOutputs = true; }
  // Carries the outputs into the objects that they map. False when none have come since the last call, or
  // the bytes are not this slave's.
  bool takeObjects(const SlaveUnit& unit);
  std::uint8_t* at(const Fmmu& fmmu);
  const std::vector<std::uint8_t>& outputs() const { return m_outputs; }
  const std::vector<std::uint8_t>& inputs() const { return m_inputs; }
  // The lower 64 bits of an output entry. False when none has this place.
  bool outputValue(std::uint16_t index, std::uint8_t subindex, std::uint64_t& value) const;

private:
  struct EntryPlace {
    std::size_t bit;
    Entry entry;
    std::vector<std::uint8_t>* object; // of a drive; null when it has no such object
  };

  static void placeEntries(const std::vector<Pdo>& pdos, std::size_t start, std::vector<EntryPlace>& entries);
  void findObjects();
  void produceObjects();
  void placePinned();

  SlaveUnit* m_unit = nullptr;
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
