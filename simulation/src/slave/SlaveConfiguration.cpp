#include "slave/SlaveConfiguration.h"

#include "slave/PdoWriter.h"

#include <algorithm>
#include <cerrno>

namespace ethercat_simulation {

void SlaveConfiguration::attach(SlaveUnit* unit, unsigned int ringPosition) {
  m_unit = unit;
  m_ringPosition = ringPosition;
  unit->attach(this);
}

void SlaveConfiguration::state(ec_slave_config_state_t& state) const {
  state.online = m_unit != nullptr ? 1 : 0;
  state.operational = m_unit != nullptr && m_unit->operational() ? 1 : 0;
  state.al_state = m_unit != nullptr ? m_unit->state() & 0x0FU : 0U;
  state.error_flag = m_unit != nullptr && m_unit->hasError() ? 1 : 0;
  state.ready = m_unit != nullptr && m_unit->ready() ? 1 : 0;
  state.position = m_unit != nullptr ? static_cast<std::uint16_t>(m_ringPosition) : std::uint16_t{0xFFFF};
}

void SlaveConfiguration::loadDefaultMapping() {
  if (m_unit == nullptr) {
    return;
  }
  for (const SyncManager& manager : m_unit->identity().defaultMapping) {
    if (manager.index < SYNC_MANAGER_COUNT) {
      m_plans[manager.index] = {manager.direction == Direction::output ? EC_DIR_OUTPUT : EC_DIR_INPUT,
                                manager.pdos};
    }
  }
}

int SlaveConfiguration::configurePdos(unsigned int count, const ec_sync_info_t* syncs) {
  if (syncs == nullptr) {
    return 0;
  }
  for (unsigned int i = 0; i < count && syncs[i].index != 0xFF; ++i) {
    const ec_sync_info_t& sync = syncs[i];
    if (sync.index >= SYNC_MANAGER_COUNT) {
      return -ENOENT;
    }
    if (sync.dir != EC_DIR_OUTPUT && sync.dir != EC_DIR_INPUT) {
      return -EINVAL;
    }
    m_plans[sync.index] = {sync.dir, {}};
    for (unsigned int j = 0; sync.pdos != nullptr && j < sync.n_pdos; ++j) {
      const ec_pdo_info_t& pdo = sync.pdos[j];
      m_plans[sync.index].pdos.push_back({pdo.index, defaultEntries(pdo.index)});
      if (pdo.n_entries == 0 || pdo.entries == nullptr) {
        continue;
      }
      // By index alone: a PDO that a lower sync manager has too gets its entries there.
      std::vector<Entry>& entries = findPdo(pdo.index)->entries;
      entries.clear();
      for (unsigned int k = 0; k < pdo.n_entries; ++k) {
        entries.push_back({pdo.entries[k].index, pdo.entries[k].subindex, pdo.entries[k].bit_length});
      }
    }
  }
  return 0;
}

std::uint16_t SlaveConfiguration::writeTo(SlaveUnit& unit) const {
  const PdoWriter writer(unit.pdos(), unit.identity(), m_master, m_ringPosition);
  writer.write(m_plans);
  const std::uint16_t code = unit.pdos().check(m_plans);
  if (code != 0) {
    writer.reportRefusal(code);
  }
  return code;
}

std::vector<Entry> SlaveConfiguration::defaultEntries(std::uint16_t pdoIndex) const {
  const auto search = [&](const std::vector<Pdo>& pdos) {
    return std::find_if(pdos.begin(), pdos.end(), [&](const Pdo& pdo) { return pdo.index == pdoIndex; });
  };
  if (m_unit != nullptr) {
    const Slave& identity = m_unit->identity();
    for (const SyncManager& manager : identity.defaultMapping) {
      const auto found = search(manager.pdos);
      if (found != manager.pdos.end()) {
        return found->entries;
      }
    }
    const auto found = search(identity.furtherPdos);
    if (found != identity.furtherPdos.end()) {
      return found->entries;
    }
  }
  return {};
}

Pdo* SlaveConfiguration::findPdo(std::uint16_t index) {
  for (SyncManagerPlan& plan : m_plans) {
    for (Pdo& pdo : plan.pdos) {
      if (pdo.index == index) {
        return &pdo;
      }
    }
  }
  return nullptr;
}

bool SlaveConfiguration::find(std::uint16_t index, std::uint8_t subindex, EntryPosition& position) const {
  for (position.syncManager = 0; position.syncManager < SYNC_MANAGER_COUNT; ++position.syncManager) {
    position.bit = 0;
    for (const Pdo& pdo : m_plans[position.syncManager].pdos) {
      for (const Entry& entry : pdo.entries) {
        if (entry.index == index && entry.subindex == subindex) {
          return true;
        }
        position.bit += entry.bitLength;
      }
    }
  }
  return false;
}

const Fmmu* SlaveConfiguration::fmmu(unsigned int domain, unsigned int syncManager) const {
  const auto found = std::find_if(m_fmmus.begin(), m_fmmus.end(), [&](const Fmmu& fmmu) {
    return fmmu.domain == domain && fmmu.syncManager == syncManager;
  });
  return found != m_fmmus.end() ? &*found : nullptr;
}

const Fmmu* SlaveConfiguration::addFmmu(unsigned int domain, unsigned int syncManager, std::size_t offset) {
  if (m_fmmus.size() == FMMU_COUNT) {
    return nullptr;
  }
  const SyncManagerPlan& plan = m_plans[syncManager];
  m_fmmus.push_back({domain, syncManager, plan.direction, offset, plan.size()});
  return &m_fmmus.back();
}

void SlaveConfiguration::describeFmmus(std::vector<FmmuPlace>& places) const {
  for (const Fmmu& fmmu : m_fmmus) {
    places.push_back({fmmu.domain, fmmu.syncManager, fmmu.offset, fmmu.size});
  }
}

} // namespace ethercat_simulation
