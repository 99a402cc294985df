#include "bus/Survey.h"

#include "descriptions/Descriptions.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus {
namespace {

constexpr bool SIMULATED = IGH_BUS_SIMULATED != 0;
constexpr std::size_t MOST_DRIVEN = 255; // slaves that the library looks at

} // namespace

std::vector<FoundSlave> readSlaves(ec_master_t* master, const std::vector<Device>& devices) {
  std::vector<FoundSlave> slaves;
  constexpr unsigned int MOST_SLAVES = 65535; // 0xFFFF is none
  for (unsigned int position = 0; position < MOST_SLAVES; ++position) {
    FoundSlave slave{};
    if (ecrt_master_get_slave(master, static_cast<std::uint16_t>(position), &slave.info) < 0)
      break;
    replaceControls(slave.info.name);
    slave.device =
        findDevice(devices, {slave.info.vendor_id, slave.info.product_code, slave.info.revision_number});
    slaves.push_back(slave);
  }
  return slaves;
}

void checkAnswers(const std::vector<FoundSlave>& slaves, std::uint16_t master) {
  if (slaves.empty())
    throw Failure(busError,
                  format("no slave answers on EtherCAT master %u%s", unsigned{master},
                         SIMULATED ? " (simulated; --bus or ETHERCAT_SIMULATION_BUS names a bus)" : ""));
}

std::vector<FoundSlave> surveyBus(const ScanOptions& options, const std::vector<Device>& devices) {
  ec_master_t* master = ecrt_request_master(options.master);
  if (!master && SIMULATED)
    throw Failure(usageError, ""); // the simulation has said what is wrong with its bus file
  if (!master)
    throw Failure(busError, format("EtherCAT master %u cannot be reserved", unsigned{options.master}));
  auto slaves = readSlaves(master, devices);
  ecrt_release_master(master);
  checkAnswers(slaves, options.master);
  return slaves;
}

void checkSize(const std::vector<FoundSlave>& slaves) {
  if (slaves.size() > MOST_DRIVEN)
    throw Failure(busError,
                  format("the bus has %zu slaves: the library drives the first %zu, the others stay in "
                         "PREOP, and the whole bus never reaches OP",
                         slaves.size(), MOST_DRIVEN));
}

void checkSlave(std::uint32_t slave, const std::vector<FoundSlave>& slaves) {
  if (slave >= slaves.size())
    throw Failure(usageError, format("slave %u: the bus has slaves 0 to %zu", slave, slaves.size() - 1));
}

std::string slaveText(std::size_t slave, const std::vector<FoundSlave>& slaves) {
  const auto* const name = slave < slaves.size() ? slaves[slave].info.name : "";
  return format("slave %zu", slave) + (*name ? format(" (%s)", name) : "");
}

bool hasProcessData(const std::vector<FoundSlave>& slaves) {
  return std::any_of(slaves.begin(), slaves.end(),
                     [](const FoundSlave& slave) { return slave.device && slave.device->entryCount() != 0; });
}

} // namespace igh_bus
