#include "slave/SlavePdos.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t INVALID_OUTPUTS = 0x001D;
constexpr std::uint16_t INVALID_INPUTS = 0x001E;
constexpr std::size_t MOST_ENTRIES = 255; // the number stands in one byte

std::tuple<std::uint16_t, std::uint8_t, std::uint8_t> key(const Entry& entry) {
  return {entry.index, entry.subindex, entry.bitLength};
}

bool isBefore(const Entry& one, const Entry& other) {
  return key(one) < key(other);
}

std::size_t bits(const std::vector<Entry>& entries) {
  std::size_t sum = 0;
  for (const Entry& entry : entries) {
    sum += entry.bitLength;
  }
  return sum;
}

} // namespace

bool isSame(const std::vector<Entry>& some, const std::vector<Entry>& others) {
  return std::equal(some.begin(), some.end(), others.begin(), others.end(),
                    [](const Entry& one, const Entry& other) { return key(one) == key(other); });
}

std::size_t SyncManagerPlan::size() const {
  std::size_t sum = 0;
  for (const Pdo& pdo : pdos) {
    sum += bits(pdo.entries);
  }
  return (sum + 7) / 8;
}

SlavePdos::SlavePdos(const Slave& identity, const ObjectDictionary& dictionary)
    : m_identity(identity), m_dictionary(dictionary) {
  for (const SyncManager& manager : identity.defaultMapping) {
    m_managers.push_back({&manager, {}});
    add(manager.pdos);
  }
  add(identity.furtherPdos);
  std::sort(m_mappable.begin(), m_mappable.end(), isBefore);
  const auto isBeforePdo = [](const OwnPdo& one, const OwnPdo& other) {
    return one.own->index < other.own->index;
  };
  std::stable_sort(m_pdos.begin(), m_pdos.end(),
                   isBeforePdo); // of a PDO that is there twice the first counts
  for (Manager& manager : m_managers) {
    manager.assigned.reserve(std::max(m_pdos.size(), manager.own->pdos.size()));
  }
  restore();
}

void SlavePdos::add(const std::vector<Pdo>& pdos) {
  for (const Pdo& pdo : pdos) {
    m_pdos.push_back({&pdo, {}});
    if (m_identity.pdoConfig) {
      m_pdos.back().entries.reserve(std::max(pdo.entries.size(), MOST_ENTRIES));
      m_mappable.insert(m_mappable.end(), pdo.entries.begin(), pdo.entries.end());
    }
  }
}

void SlavePdos::restore() {
  for (OwnPdo& pdo : m_pdos) {
    pdo.entries = pdo.own->entries;
  }
  for (Manager& manager : m_managers) {
    manager.assigned.clear();
    for (const Pdo& pdo : manager.own->pdos) {
      manager.assigned.push_back(pdo.index);
    }
  }
}

bool SlavePdos::hasManager(unsigned int index) const {
  return manager(index) != nullptr;
}

const SlavePdos::OwnPdo* SlavePdos::find(std::uint16_t pdo) const {
  const auto found =
      std::lower_bound(m_pdos.begin(), m_pdos.end(), pdo,
                       [](const OwnPdo& own, std::uint16_t index) { return own.own->index < index; });
  return found != m_pdos.end() && found->own->index == pdo ? &*found : nullptr;
}

SlavePdos::OwnPdo* SlavePdos::find(std::uint16_t pdo) {
  return const_cast<OwnPdo*>(std::as_const(*this).find(pdo));
}

const SlavePdos::Manager* SlavePdos::manager(unsigned int index) const {
  const auto found = std::find_if(m_managers.begin(), m_managers.end(),
                                  [&](const Manager& manager) { return manager.own->index == index; });
  return found != m_managers.end() ? &*found : nullptr;
}

SlavePdos::Manager* SlavePdos::manager(unsigned int index) {
  return const_cast<Manager*>(std::as_const(*this).manager(index));
}

const std::vector<Entry>* SlavePdos::mapping(std::uint16_t pdo) const {
  const OwnPdo* own = find(pdo);
  return own != nullptr ? &own->entries : nullptr;
}

bool SlavePdos::clearMapping(std::uint16_t pdo) {
  OwnPdo* own = find(pdo);
  if (own == nullptr || own->own->fixed) {
    return false;
  }
  own->entries.clear();
  return true;
}

bool SlavePdos::map(std::uint16_t pdo, const Entry& entry) {
  std::vector<Entry>& entries = find(pdo)->entries;
  if (entries.size() == entries.capacity() || !knows(entry)) {
    return false;
  }
  entries.push_back(entry);
  return true;
}

// A gap needs no object. A slave that lists neither objects nor entries cannot tell.
bool SlavePdos::knows(const Entry& entry) const {
  if (entry.index == 0 || (m_mappable.empty() && m_identity.objects.empty())) {
    return true;
  }
  const std::vector<std::uint8_t>* object = m_dictionary.value(entry.index, entry.subindex);
  const bool fits = object != nullptr && object->size() == (entry.bitLength + 7U) / 8;
  return fits || std::binary_search(m_mappable.begin(), m_mappable.end(), entry, isBefore);
}

bool SlavePdos::isAssigned(unsigned int index, const std::vector<Pdo>& pdos) const {
  static const std::vector<std::uint16_t> none;
  const Manager* own = manager(index);
  const std::vector<std::uint16_t>& assigned = own != nullptr ? own->assigned : none;
  return std::equal(assigned.begin(), assigned.end(), pdos.begin(), pdos.end(),
                    [](std::uint16_t one, const Pdo& other) { return one == other.index; });
}

bool SlavePdos::clearAssignment(unsigned int index) {
  Manager* own = manager(index);
  if (own != nullptr) {
    own->assigned.clear();
  }
  return own != nullptr;
}

bool SlavePdos::assign(unsigned int index, std::uint16_t pdo) {
  std::vector<std::uint16_t>& assigned = manager(index)->assigned;
  if (pdo == 0 || find(pdo) == nullptr || assigned.size() == assigned.capacity() || excludes(pdo)) {
    return false;
  }
  assigned.push_back(pdo);
  return true;
}

// An exclusion counts both ways, whichever of the two names the other.
bool SlavePdos::excludes(std::uint16_t pdo) const {
  const auto names = [&](std::uint16_t one, std::uint16_t other) {
    const std::vector<std::uint16_t>& excluded = find(one)->own->excludes;
    return std::find(excluded.begin(), excluded.end(), other) != excluded.end();
  };
  return std::any_of(m_managers.begin(), m_managers.end(), [&](const Manager& manager) {
    return std::any_of(manager.assigned.begin(), manager.assigned.end(),
                       [&](std::uint16_t other) { return names(pdo, other) || names(other, pdo); });
  });
}

std::size_t SlavePdos::length(unsigned int index) const {
  std::size_t sum = 0;
  if (const Manager* own = manager(index)) {
    for (const std::uint16_t pdo : own->assigned) {
      sum += bits(find(pdo)->entries);
    }
  }
  return (sum + 7) / 8;
}

std::uint16_t SlavePdos::check(const SyncManagerPlans& plans) const {
  if (!m_identity.checksLengths || !areKnown()) {
    return 0;
  }
  for (unsigned int index = 0; index < SYNC_MANAGER_COUNT; ++index) {
    if (plans[index].size() != length(index)) {
      const Manager* own = manager(index);
      const bool input =
          own != nullptr ? own->own->direction == Direction::input : plans[index].direction == EC_DIR_INPUT;
      return input ? INVALID_INPUTS : INVALID_OUTPUTS;
    }
  }
  return 0;
}

} // namespace ethercat_simulation
