// What stands in for the members and calls that stock releases of the master lack.
#include "EthercatObject/Base/PlatformRelease.h"

#include "EthercatObject/Platform.h"

using namespace runtime_test;

namespace {

struct Stock {}; // a record without any of them

TEST_F(Platform, MembersAreUsedWhereTheyAreAndReplacedWhereTheyAreNot) {
  bus().setErrorFlag(1, true);
  ec_master_state_t state{};
  ec_slave_config_state_t configuration{};
  EXPECT_FALSE(isScanBusy(state, 0));
  EXPECT_FALSE(hasErrorFlag(configuration, master, 1, 0));
  state.scan_busy = 1;
  configuration.error_flag = 1;
  EXPECT_TRUE(isScanBusy(state, 0));
  EXPECT_TRUE(hasErrorFlag(configuration, master, 0, 0));

  EXPECT_FALSE(isScanBusy(Stock(), 0));
  EXPECT_TRUE(hasErrorFlag(Stock(), master, 1, 0));
  EXPECT_FALSE(hasErrorFlag(Stock(), master, 0, 0));
  EXPECT_FALSE(hasErrorFlag(Stock(), master, 2, 0)) << "no such slave";
  Stock stock;
  EXPECT_EQ(createCompleteSdoRequest(&stock, 0x1018, 4, 0), nullptr);
}

} // namespace
