// The slaves on the bus before the library takes it.
#ifndef IGH_BUS_SURVEY_H
#define IGH_BUS_SURVEY_H

#include "bus/Options.h"
#include "descriptions/Device.h"

#include <ecrt.h>

namespace igh_bus {

struct FoundSlave {
  ec_slave_info_t info;
  const Device* device = nullptr; // its description, null for none
};

// All slaves of a master that is held or opened.
std::vector<FoundSlave> readSlaves(ec_master_t* master, const std::vector<Device>& devices);

// Throws Failure(busError) for a bus without slaves.
void checkAnswers(const std::vector<FoundSlave>& slaves, std::uint16_t master);

// Reserves the master, reads its slaves and releases it. Throws Failure when there is no master or no slave.
std::vector<FoundSlave> surveyBus(const ScanOptions& options, const std::vector<Device>& devices);

// Throws Failure(busError) for a bus with more slaves than the library drives.
void checkSize(const std::vector<FoundSlave>& slaves);

// Throws Failure(usageError) for a slave that is not on the bus.
void checkSlave(std::uint32_t slave, const std::vector<FoundSlave>& slaves);

// "slave 5 (EM500 servo drive X)"
std::string slaveText(std::size_t slave, const std::vector<FoundSlave>& slaves);

bool hasProcessData(const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
