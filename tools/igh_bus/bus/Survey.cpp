#include "bus/Survey.h"

#include "descriptions/Descriptions.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace igh_bus {
namespace {

constexpr bool SIMULATED = IGH_BUS_SIMULATED != 0;
constexpr std::size_t MOST_DRIVEN = 255; // slaves that the library looks at

} // namespace

std::vector<FoundSlave> surveyBus(const ScanOptions& options, const std::vector<Device>& devices) {
  ec_master_t* master = ecrt_request_master(options.master);
  if (!master && SIMULATED)
    throw Failure(usageError, ""); // the simulation has said what is wrong with its bus file
  if (!master)
    throw Failure(busError, format("EtherCAT master %u cannot be reserved", unsigned{options.master}));
  std::vector<FoundSlave> slaves;
  constexpr unsigned int MOST_SLAVES = 65535; // 0xFFFF is none
  for (unsigned int position = 0; position < MOST_SLAVES; ++position) {
    FoundSlave slave{};
    if (ecrt_master_get_slave(master, static_cast<std::uint16_t>(position), &slave.info) < 0)
      break;
    slave.device =
        findDevice(devices, {slave.info.vendor_id, slave.info.product_code, slave.info.revision_number});
    slaves.push_back(slave);
  }
  ecrt_release_master(master);
  if (slaves.empty())
    throw Failure(busError, format("no slave answers on EtherCAT master %u", unsigned{options.master}));
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

bool hasProcessData(const std::vector<FoundSlave>& slaves) {
  return std::any_of(slaves.begin(), slaves.end(),
                     [](const FoundSlave& slave) { return slave.device && slave.device->entryCount() != 0; });
}

void printSlaves(const std::vector<FoundSlave>& slaves) {
  std::size_t widestAddress = 0;
  std::size_t widestState = 0;
  std::size_t widestName = 0;
  const auto address = [](const FoundSlave& slave) {
    return format("%u:%u", unsigned{slave.info.alias}, unsigned{slave.info.position});
  };
  for (const auto& slave : slaves) {
    widestAddress = std::max(widestAddress, address(slave).size());
    widestState = std::max(widestState, stateText(slave.info.al_state & 0xFU).size());
    widestName = std::max(widestName, std::strlen(slave.info.name));
  }
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    const auto& [info, device] = slaves[i];
    std::printf("%-*zu  %-*s  %-*s  %c  %-*s  %s\n",
                slaves.size() > 100  ? 3
                : slaves.size() > 10 ? 2
                                     : 1,
                i, static_cast<int>(widestAddress), address(slaves[i]).c_str(), static_cast<int>(widestState),
                stateText(info.al_state & 0xFU).c_str(), info.error_flag ? 'E' : '+',
                static_cast<int>(widestName), info.name,
                device ? device->typeName.c_str() : "no description");
  }
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    if (slaves[i].info.alias != 0)
      std::printf(
          "slave %zu has alias %u: the real master reads the position beside an alias as an offset behind "
          "it, so this slave stays offline\n",
          i, unsigned{slaves[i].info.alias});
  }
}

} // namespace igh_bus
