#include "bus/OpenedMaster.h"

#include "EthercatObject/Base/PlatformRelease.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <chrono>
#include <thread>

namespace igh_bus {
namespace {

void waitForScan(ec_master_t* master) {
  using namespace std::chrono_literals;
  constexpr auto LONGEST = 10s;
  const auto end = std::chrono::steady_clock::now() + LONGEST;
  ec_master_state_t state{};
  static_cast<void>(ecrt_master_state(master, &state));
  while (isScanBusy(state, 0) && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(50ms);
    static_cast<void>(ecrt_master_state(master, &state));
  }
}

} // namespace

OpenedMaster::OpenedMaster(std::uint16_t master) : m_master(ecrt_open_master(master)), m_index(master) {
  if (!m_master && IGH_BUS_SIMULATED)
    throw Failure(usageError, ""); // the simulation has said what is wrong with its bus file
  if (!m_master)
    throw Failure(busError, format("EtherCAT master %u cannot be opened", unsigned{master}));
  waitForScan(m_master);
}

OpenedMaster::~OpenedMaster() {
  ecrt_release_master(m_master);
}

std::vector<FoundSlave> OpenedMaster::slaves(const std::vector<Device>& devices) const {
  auto found = readSlaves(m_master, devices);
  checkAnswers(found, m_index);
  return found;
}

std::optional<ec_slave_info_t> OpenedMaster::slave(std::uint16_t position) const {
  ec_slave_info_t info{};
  return ecrt_master_get_slave(m_master, position, &info) < 0 ? std::nullopt : std::optional(info);
}

bool OpenedMaster::scans() const {
  ec_master_state_t state{};
  static_cast<void>(ecrt_master_state(m_master, &state));
  return isScanBusy(state, 0);
}

std::vector<SyncManager> OpenedMaster::syncManagers(const FoundSlave& slave) const {
  std::vector<SyncManager> found;
  for (std::uint8_t index = 0; index < slave.info.sync_count; ++index) {
    ec_sync_info_t info{};
    if (ecrt_master_get_sync_manager(m_master, slave.info.position, index, &info) < 0)
      continue;
    found.push_back({index, info.dir == EC_DIR_OUTPUT, {}});
    for (unsigned int place = 0; place < info.n_pdos; ++place)
      found.back().pdos.push_back(pdo(slave.info.position, index, static_cast<std::uint16_t>(place)));
  }
  return found;
}

Pdo OpenedMaster::pdo(std::uint16_t slave, std::uint8_t syncManager, std::uint16_t place) const {
  Pdo found;
  ec_pdo_info_t info{};
  if (ecrt_master_get_pdo(m_master, slave, syncManager, place, &info) < 0)
    return found;
  found.index = info.index;
  for (unsigned int entry = 0; entry < info.n_entries; ++entry) {
    ec_pdo_entry_info_t entryInfo{};
    if (ecrt_master_get_pdo_entry(m_master, slave, syncManager, place, static_cast<std::uint16_t>(entry),
                                  &entryInfo) < 0)
      continue;
    found.entries.emplace_back();
    found.entries.back().index = entryInfo.index;
    found.entries.back().subindex = entryInfo.subindex;
    found.entries.back().bitLength = entryInfo.bit_length;
  }
  return found;
}

} // namespace igh_bus
