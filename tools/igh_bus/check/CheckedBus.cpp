#include "check/CheckedBus.h"

#include "bus/SlaveErrors.h"
#include "scan/SlaveDetails.h"

#include <algorithm>
#include <cmath>

namespace igh_bus::check {
namespace {

// Without an answer of the slave its description tells.
bool servesObjects(const DeviceFile& file, const FoundSlave& slave) {
  const auto protocols = readDetails(file, slave.info.position).mailboxProtocols;
  if (!protocols)
    return slave.device->markup.coe;
  return std::find(protocols->begin(), protocols->end(), "CoE") != protocols->end();
}

// The rule of the library.
bool usesClock(const Device& device) {
  const auto mode = device.clockModes.find("DC");
  return mode != device.clockModes.end() && mode->second.assignActivate != 0;
}

// Of a repeated name the library reaches the last entry only.
void addInputs(const Device& device, std::uint16_t slave, std::vector<EntryAddress>& inputs) {
  forEachEntry(device, [&](const SyncManager& syncManager, const Pdo&, const Entry& entry) {
    if (!syncManager.output && convertedBytes(entry.type) != 0 &&
        findEntry(device, entry.name).entry == &entry)
      inputs.push_back({slave, entry.name});
  });
}

} // namespace

CheckedBus::CheckedBus(const CheckOptions& theOptions, const std::vector<FoundSlave>& theSlaves,
                       RealTime& theRealTime)
    : options(theOptions), slaves(theSlaves), realTime(theRealTime) {
  const DeviceFile file(options.master);
  for (const auto& slave : slaves) {
    if (!slave.device)
      continue;
    if (servesObjects(file, slave))
      withObjects.push_back(slave.info.position);
    if (usesClock(*slave.device))
      withClocks.push_back(slave.info.position);
    addInputs(*slave.device, slave.info.position, inputs);
  }
}

std::string CheckedBus::name(std::size_t slave) const {
  return slaveName(slave, slaves);
}

std::uint64_t CheckedBus::cyclesOf(double seconds) const {
  return static_cast<std::uint64_t>(std::ceil(seconds * 1e9 / options.periodNs));
}

double CheckedBus::clockBoundNs() const {
  return options.clockBoundNs.value_or(options.periodNs / 10.0);
}

} // namespace igh_bus::check
