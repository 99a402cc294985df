#include "bus/BusChoice.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <unistd.h>

namespace igh_bus {
namespace {

constexpr bool SIMULATED = IGH_BUS_SIMULATED != 0;
constexpr const char* BUS_VARIABLE = "ETHERCAT_SIMULATION_BUS";
constexpr unsigned int LAST_SYNC_MANAGER = 15;

using nlohmann::json;

// A module's PDO is not found: the description says nothing more of it.
const PdoMarkup* markupOf(const Device& device, bool output, std::uint16_t index) {
  const auto& pdos = device.markup.pdos;
  const auto found = std::find_if(pdos.begin(), pdos.end(), [&](const PdoMarkup& pdo) {
    return pdo.assigned && pdo.output == output && pdo.index == index;
  });
  return found == pdos.end() ? nullptr : &*found;
}

json syncManagerJson(const Device& device, const SyncManager& syncManager) {
  json pdos = json::array();
  for (const auto& pdo : syncManager.pdos) {
    json entries = json::array();
    for (const auto& entry : pdo.entries)
      entries.push_back({{"index", format("0x%04X", unsigned{entry.index})},
                         {"subindex", entry.subindex},
                         {"bit_length", entry.bitLength}});
    const auto* markup = markupOf(device, syncManager.output, pdo.index);
    pdos.push_back({{"index", format("0x%04X", unsigned{pdo.index})},
                    {"entries", entries},
                    {"fixed", markup && markup->fixed},
                    {"excludes", markup ? json(markup->excludes) : json::array()}});
  }
  return {
      {"index", syncManager.index}, {"direction", syncManager.output ? "output" : "input"}, {"pdos", pdos}};
}

// The slave as its description has it. What no slave can have is left to the master to refuse: a sync manager
// beyond the last one.
json slaveJson(const Device& device) {
  json syncManagers = json::array();
  for (const auto& syncManager : device.syncManagers) {
    if (syncManager.index <= LAST_SYNC_MANAGER)
      syncManagers.push_back(syncManagerJson(device, syncManager));
  }
  return {{"vendor_id", format("0x%08X", device.key.vendorId)},
          {"product_code", format("0x%08X", device.key.productCode)},
          {"revision", format("0x%08X", device.key.revision)},
          {"name", device.typeName.substr(0, EC_MAX_STRING_LENGTH - 1)},
          {"model", "loopback"},
          {"distributed_clocks", !device.clockModes.empty()},
          {"coe", device.markup.coe},
          {"pdo_assign", device.markup.pdoAssign},
          {"pdo_config", device.markup.pdoConfig},
          {"sync_managers", syncManagers}};
}

std::string everyDeviceOnce(const std::vector<Device>& devices, std::uint16_t master) {
  json slaves = json::array();
  for (const auto& device : devices)
    slaves.push_back(slaveJson(device));
  const json bus = {{"masters", json::array({{{"index", master}, {"slaves", slaves}}})}};
  return bus.dump(-1, ' ', true, json::error_handler_t::replace);
}

// The file descriptor of an anonymous file with this text.
int anonymousFile(const std::string& text) {
  const int file = memfd_create("igh_bus", MFD_CLOEXEC);
  std::size_t written = 0;
  while (file >= 0 && written < text.size()) {
    const auto count = write(file, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      throw Failure(busError, std::string("cannot keep the simulated bus: ") + std::strerror(errno));
    written += static_cast<std::size_t>(count);
  }
  if (file < 0)
    throw Failure(busError, std::string("cannot keep the simulated bus: ") + std::strerror(errno));
  return file;
}

} // namespace

BusChoice::BusChoice(const ScanOptions& options, const std::vector<Device>& devices) {
  if (!options.busFile.empty()) {
    if (!SIMULATED)
      throw Failure(usageError, "--bus needs the simulated master; this program drives a real one");
    if (access(options.busFile.c_str(), R_OK) != 0) // opening a pipe would wait for its writer
      throw Failure(usageError, options.busFile + ": " + std::strerror(errno));
    setenv(BUS_VARIABLE, options.busFile.c_str(), 1);
  } else if (SIMULATED && std::getenv(BUS_VARIABLE) == nullptr) {
    m_file = anonymousFile(everyDeviceOnce(devices, options.master));
    setenv(BUS_VARIABLE, format("/proc/self/fd/%d", m_file).c_str(), 1);
  }
}

BusChoice::~BusChoice() {
  if (m_file >= 0)
    close(m_file);
}

} // namespace igh_bus
