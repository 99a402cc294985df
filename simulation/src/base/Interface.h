// <ecrt.h> as the rest of the world sees it: the calls declared there are the symbols that this library
// exports.
#ifndef ETHERCAT_SIMULATION_INTERFACE_H
#define ETHERCAT_SIMULATION_INTERFACE_H

#pragma GCC visibility push(default)
#include <ecrt.h>
#pragma GCC visibility pop

#include <cstddef>
#include <cstdint>

namespace ethercat_simulation {

constexpr unsigned int SYNC_MANAGER_COUNT = EC_MAX_SYNC_MANAGERS;
constexpr std::size_t FMMU_COUNT = 16;          // per slave
constexpr std::size_t DATAGRAM_CAPACITY = 1486; // bytes of process data

constexpr std::uint8_t STATE_INIT = EC_AL_STATE_INIT;
constexpr std::uint8_t STATE_PREOP = EC_AL_STATE_PREOP;
constexpr std::uint8_t STATE_BOOT = 3; // on the bus, not in <ecrt.h>
constexpr std::uint8_t STATE_SAFEOP = EC_AL_STATE_SAFEOP;
constexpr std::uint8_t STATE_OP = EC_AL_STATE_OP;

} // namespace ethercat_simulation

#endif
