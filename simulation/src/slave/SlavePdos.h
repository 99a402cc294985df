// The PDOs of one slave: what it maps and assigns by itself, what it takes and refuses when the master writes
// to its PDO objects, and the lengths of its sync managers that follow from both.
#ifndef ETHERCAT_SIMULATION_SLAVE_PDOS_H
#define ETHERCAT_SIMULATION_SLAVE_PDOS_H

#include "slave/ObjectDictionary.h"

#include <array>

namespace ethercat_simulation {

// What the master wants of one sync manager.
struct SyncManagerPlan {
  ec_direction_t direction = EC_DIR_INVALID;
  std::vector<Pdo> pdos;
  std::size_t size() const; // bytes
};
using SyncManagerPlans = std::array<SyncManagerPlan, SYNC_MANAGER_COUNT>;

bool isSame(const std::vector<Entry>& some, const std::vector<Entry>& others);

// Allocates when it is made only: slaves climb in the middle of the cycle.
class SlavePdos {
public:
  // Both must outlive this object.
  SlavePdos(const Slave& identity, const ObjectDictionary& dictionary);

  // As after power-up: what was written is gone.
  void restore();
  // Whether there is anything to compare with.
  bool areKnown() const { return !m_pdos.empty() || !m_managers.empty(); }
  bool hasManager(unsigned int index) const;

  // The mapping of a PDO, 0x1600 and 0x1A00 and so on. Null when the slave has no such PDO.
  const std::vector<Entry>* mapping(std::uint16_t pdo) const;
  bool clearMapping(std::uint16_t pdo); // false for a fixed one
  bool map(std::uint16_t pdo, const Entry& entry);

  // The assignment of a sync manager, 0x1C10 and on.
  bool isAssigned(unsigned int manager, const std::vector<Pdo>& pdos) const;
  bool clearAssignment(unsigned int manager);
  bool assign(unsigned int manager, std::uint16_t pdo);

  // The AL status code with which the slave answers to sync managers of these lengths, 0 for none.
  std::uint16_t check(const SyncManagerPlans& plans) const;

private:
  struct OwnPdo {
    const Pdo* own;
    std::vector<Entry> entries;
  };
  struct Manager {
    const SyncManager* own;
    std::vector<std::uint16_t> assigned;
  };

  void add(const std::vector<Pdo>& pdos);
  const OwnPdo* find(std::uint16_t pdo) const;
  OwnPdo* find(std::uint16_t pdo);
  const Manager* manager(unsigned int index) const;
  Manager* manager(unsigned int index);
  bool knows(const Entry& entry) const;
  bool excludes(std::uint16_t pdo) const;
  std::size_t length(unsigned int manager) const;

  const Slave& m_identity;
  const ObjectDictionary& m_dictionary;
  std::vector<OwnPdo> m_pdos; // by index
  std::vector<Manager> m_managers;
  std::vector<Entry> m_mappable; // sorted; what its own PDOs map at first
};

} // namespace ethercat_simulation

#endif
