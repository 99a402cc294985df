// How the parts of a bus file are read. Everything here throws FileProblem.
#ifndef ETHERCAT_SIMULATION_BUS_FILE_PARTS_H
#define ETHERCAT_SIMULATION_BUS_FILE_PARTS_H

#include "busfile/JsonFile.h"

#include <ethercat_simulation/Fault.h>
#include <ethercat_simulation/Slave.h>

namespace ethercat_simulation {

constexpr std::uint64_t LIMIT8 = 0xFF;
constexpr std::uint64_t LIMIT16 = 0xFFFF;
constexpr std::uint64_t LIMIT32 = 0xFFFFFFFF;
constexpr double FARTHEST_CLOCK = 1e12; // nanoseconds

Slave readSlave(const JsonNode& node);
std::vector<Slave> readSlaves(const JsonNode& node);
std::vector<Fault> readFaults(const JsonNode& node, const std::vector<Slave>& slaves);

} // namespace ethercat_simulation

#endif
