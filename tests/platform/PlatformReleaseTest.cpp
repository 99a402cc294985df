// What the library does with a stock release, whose header lacks members and a call: records of that form,
// served by the simulated master.
#include "EthercatObject/PlatformRelease.h"

#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>

namespace {

namespace sim = ethercat_simulation;

struct StockConfigState {
  unsigned int online : 1;
};
struct StockMasterState {
  unsigned int slaves_responding;
};
struct StockConfig; // no complete access takes it

TEST(StockRelease, ErrorFlagComesFromTheSlaveAndTheRestIsNever) {
  sim::reset();
  sim::Slave slave;
  slave.vendorId = slave.productCode = 1;
  sim::bus().addSlave(slave);
  sim::bus().addSlave(slave);
  ec_master_t* const master = ecrt_request_master(0);
  ASSERT_NE(master, nullptr);
  const StockConfigState state{1};
  EXPECT_FALSE(hasErrorFlag(state, master, 1, 0));
  sim::bus().setErrorFlag(1, true);
  EXPECT_TRUE(hasErrorFlag(state, master, 1, 0));
  EXPECT_FALSE(hasErrorFlag(state, master, 0, 0));
  EXPECT_FALSE(hasErrorFlag(state, master, 7, 0)) << "a slave that has left";
  EXPECT_FALSE(isScanBusy(StockMasterState{2}, 0));
  EXPECT_EQ(createCompleteSdoRequest(static_cast<StockConfig*>(nullptr), 0x1018, 8, 0), nullptr);

  // The patched release is asked for its own.
  ec_slave_config_state_t own{};
  own.error_flag = 1;
  EXPECT_TRUE(hasErrorFlag(own, nullptr, 0, 0));
  ec_master_state_t scanning{};
  scanning.scan_busy = 1;
  EXPECT_TRUE(isScanBusy(scanning, 0));
  EXPECT_NE(createCompleteSdoRequest(ecrt_master_slave_config(master, 0, 0, 1, 1), 0x1018, 8, 0), nullptr);
  ecrt_release_master(master);
  sim::reset();
}

} // namespace
