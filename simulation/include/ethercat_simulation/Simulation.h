// Control side of the simulated EtherCAT master: what a test or a test bench says to the bus.
//
// The library under test calls <ecrt.h>; the test builds the bus, sets faults and reads what happened here.
// One lock serves every call, of the application as of this side, so any thread may say and look while
// another cycles; what Bus::trace() says is the exception. A call that waits for the bus (a register, a
// blocking SDO transfer) holds nobody up meanwhile. States, transfers and scans take the time of a real
// master, unless setTiming says otherwise; they move only while the application cycles.
#ifndef ETHERCAT_SIMULATION_SIMULATION_H
#define ETHERCAT_SIMULATION_SIMULATION_H

#include <ethercat_simulation/Bus.h>

#pragma GCC visibility push(default)

namespace ethercat_simulation {

// The bus of the master with this index; created empty on first use. From then on the master exists and can
// be requested, and the bus file named by the environment is not read for it any more.
Bus& bus(unsigned int masterIndex = 0);

// Ends every master: buses, handles, traces and misuse counts are gone, and ETHERCAT_SIMULATION_BUS is read
// again at the next request. Handles that the library under test still holds are dead afterwards, and so is
// every Bus: no other thread may be about to call one. A call that waits for the bus meanwhile finds no
// slave.
void reset();

// Loads a bus file as ETHERCAT_SIMULATION_BUS would. Empty on success, else one line: file, place, reason.
std::string loadBusFile(const std::string& path);

// The same from the text of a bus file; place and reason.
std::string buildBuses(const std::string& json);

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
