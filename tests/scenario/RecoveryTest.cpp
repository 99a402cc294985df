// What is left over from a life before: configurations of other slaves, domains of failed activations,
// layouts that the platform did not take.
#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, ASlaveOfAnotherTypeTakesTheOldPlaceOfALostOne) {
  startInOp({byteIo, {0x20, {{"Out", "UINT"}}, {{"In", "UINT"}}}, byteIo});
  bus().removeSlave(1);
  errorsOf(50);
  quietly([] { igh_master_scan(0, nullptr); });
  expectPrint("", "Slave 0:1 of master 0 was configured as another type before.\nFailed to configure PDOs.\n",
              [] { igh_master_config_all_slave(0); });
  quietly([] { EXPECT_TRUE(igh_master_active(0)); });
  send(1, "Out", 7);
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(1), Bytes{7});
}

TEST_F(Scenario, ARegistrationThatFailedOnceLeavesNothingToCopyInto) {
  startInOp({{0x30, {{"A", "USINT"}, {"gap", "", 8}, {"B", "USINT"}}, {{"In", "USINT"}}}});
  bus().failNext(Call::activate); // an activation that fails misses no image
  capture([] { EXPECT_FALSE(igh_master_active(0)); });
  EXPECT_TRUE(igh_master_active(0));
  bus().failNext(Call::regPdoEntryList, -2, 1); // behind the gap: the first run has its place already
  capture([] { EXPECT_FALSE(igh_master_active(0)); });
  EXPECT_TRUE(igh_master_active(0));
  send(0, "B", 5);
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0).at(2), 5U);
}

TEST_F(Scenario, ARefusedLayoutBoundsWhatIsCopied) {
  ethercat_simulation::Slave narrow = slaveOf({0x40});
  narrow.defaultMapping = {{2, ethercat_simulation::Direction::output, {{0x1600, {{0x7000, 1, 8}}}}}};
  bus().addSlave(narrow);
  build({});
  EXPECT_TRUE(describe({{0x40, {{"Out", "UDINT"}}}}));
  bus().failNext(Call::configPdos, -22);
  bringUp();
  send(0, "Out", 0x01020304);
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0), Bytes{4}); // an image of one byte; a sanitizer sees a second one
}
