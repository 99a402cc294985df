#include "Fixture.h"

#include <cerrno>

using namespace scenario;

namespace {

void activate(bool expected, const std::string& out, const std::string& err) {
  expectPrint(out, err, [expected] { EXPECT_EQ(igh_master_active(0), expected); });
}

} // namespace

TEST_F(Scenario, FirstActivationMakesTheseCallsWithTheseArguments) {
  Device allTimes{0x31, {{"Out", "USINT"}}};
  allTimes.extra = "<Dc><OpMode><Name>DC</Name><AssignActivate>#x0700</AssignActivate>"
                   "<CycleTimeSync0>500000</CycleTimeSync0><ShiftTimeSync0>-30000</ShiftTimeSync0>"
                   "<CycleTimeSync1>250000</CycleTimeSync1><ShiftTimeSync1>1000</ShiftTimeSync1>"
                   "</OpMode></Dc>";
  allTimes.alias = 0x12C;
  build({byteIo, switcher, clocked, allTimes}, {0, 2000000, true, true});
  bus().setTracing(true);
  configure();
  EXPECT_THAT(callTexts(Call::slaveConfig), testing::HasSubstr("(300, 3, 0x00000002, 0x00000031)"));
  EXPECT_THAT(callTexts(Call::configPdos),
              testing::StartsWith("ecrt_slave_config_pdos(0:0, EC_END, [2 output 0x1600(0x7000:01/8), "
                                  "3 input 0x1A00(0x6000:01/8)]) = 0\n"
                                  "ecrt_slave_config_pdos(0:1, EC_END, NULL) = 0\n"));
  bus().clearTrace();
  activate(true,
           "uiAssignActivate = 300, config dc for slave 0:2, circle0=2000000, shift0 = 1000000, "
           "circle1=0, shift1 = 0\n"
           "uiAssignActivate = 700, config dc for slave 300:3, circle0=500000, shift0 = -30000, "
           "circle1=250000, shift1 = 1000\n",
           "");
  EXPECT_EQ(calls(), "master_create_domain domain_reg_pdo_entry_list slave_config_dc slave_config_dc "
                     "master_select_reference_clock master_activate domain_data");
  EXPECT_THAT(callTexts(Call::regPdoEntryList),
              testing::HasSubstr(", 300:3 0x00000002 0x00000031 0x7000:01]"));
  EXPECT_EQ(callTexts(Call::configDc), "ecrt_slave_config_dc(0:2, 0x0300, 2000000, 1000000, 0, 0)\n"
                                       "ecrt_slave_config_dc(300:3, 0x0700, 500000, -30000, 250000, 1000)\n");
  EXPECT_EQ(callTexts(Call::selectReferenceClock), "ecrt_master_select_reference_clock(0:2) = 0\n");
}

TEST_F(Scenario, ReferenceClockIsChosenOnlyToFollowItAndClocksOnceOffStayOff) {
  build({clocked}, {0, 1000000, true, true});
  configure();
  bus().failNext(Call::selectReferenceClock, -EINVAL);
  EXPECT_EQ(capture([] { EXPECT_TRUE(igh_master_active(0)); }).err,
            "Failed to select reference clock: Invalid argument\n");
  start({clocked}, {1, 1000000, true, false});
  EXPECT_EQ(bus(1).callCount(Call::configDc), 1U);
  EXPECT_EQ(bus(1).callCount(Call::selectReferenceClock), 0U);
  start({clocked}, {2, 1000000, false, true});
  start({byteIo}, {3, 1000000, true, true}); // nothing with a clock: off for good
  EXPECT_TRUE(describe({clocked}, 3));
  bus(3).addSlave(slaveOf(clocked));
  cycle(20, 3);
  bringUp(3);
  EXPECT_EQ(bus(2).callCount(Call::configDc) + bus(3).callCount(Call::configDc), 0U);
}

TEST_F(Scenario, EachFailureOfConfigurationAndActivationSaysItsLineAndTheCallCanBeMadeAgain) {
  build({byteIo, byteIo});
  EXPECT_FALSE(igh_master_config_slave(0, 0)); // no scan yet
  quietly([] { igh_master_scan(0, nullptr); });
  EXPECT_TRUE(igh_master_config_slave(0, 0));
  EXPECT_FALSE(igh_master_config_slave(0, 2));
  activate(false, "slave 2 do not config\n", "");
  for (const Call call : {Call::configPdos, Call::slaveConfig}) {
    bus().failNext(call, -ENOENT, 1);
    expectPrint("", "Failed to configure PDOs.\n", [] { EXPECT_TRUE(igh_master_config_all_slave(0)); });
  }
  activate(false, "slave 2 do not config\n", "");
  configure();
  for (const Call call : {Call::createDomain, Call::regPdoEntryList}) {
    bus().failNext(call, -ENOENT);
    activate(false, "", "PDO entry registration failed!\n");
  }
  EXPECT_EQ(bus().callCount(Call::activate), 0U);
  bus().failNext(Call::activate, -EIO);
  activate(false, "", "");
  EXPECT_TRUE(igh_master_set_exchange_mode(0, false)); // not active
  activate(true, "", "");
  EXPECT_FALSE(igh_master_set_exchange_mode(0, true));
  cycleUntil(8);
}

TEST_F(Scenario, EachRunOfEntriesBetweenGapsIsRegisteredAndMovesItsData) {
  const std::vector<Field> outputs{{"gap", "USINT"},   {"A", "USINT"}, {"gap 2", "UINT"},
                                   {"gap 3", "USINT"}, {"B", "UINT"},  {"gap 4", "USINT"}};
  start({{0x40, outputs}, {0x41, {{"gap", "USINT"}, {"D", "USINT"}}, {{"In", "USINT"}}}});
  EXPECT_EQ(bus().callCount(Call::regPdoEntryList), 3U);
  send(0, "A", 0x11);
  send(0, "B", 0x22);
  send(1, "D", 0x33);
  send(0, "gap", 0xEE); // has a handle like any other, but never moves
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0), (Bytes{0, 0x11, 0, 0, 0, 0x22, 0, 0}));
  EXPECT_EQ(bus().outputs(1), (Bytes{0, 0x33}));
}
