#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, PeriodLimitsAreHeldAndAnExistingMasterKeepsItsPeriod) {
  std::uint32_t period = 1;
  for (const std::uint32_t refused : {0U, 99999U, 4000000001U, 0xFFFFFFFFU}) {
    expectPrint("Ethercat exchange period should between 100000 and 4000000000.\n", "",
                [&] { EXPECT_FALSE(igh_master_initialize(0, refused, false)); });
    EXPECT_FALSE(igh_master_get_period(0, &period));
  }
  build({byteIo}, {0, 100000});
  build({byteIo}, {1, 4000000000U});
  EXPECT_TRUE(igh_master_initialize(0, 2000000, true));
  EXPECT_EQ(bus(0).callCount(Call::requestMaster), 1U);
  EXPECT_TRUE(igh_master_get_period(0, &period));
  EXPECT_EQ(period, 100000U);
  EXPECT_FALSE(igh_master_get_period(0, nullptr));
  EXPECT_FALSE(igh_master_get_system_base_offset(0, nullptr));
  EXPECT_FALSE(igh_master_enable_eoe_function(0, 0, true));
}

TEST_F(Scenario, MasterTwoOwnsItsBusAndDeviceFileUntilItIsUninitialised) {
  startInOp({byteIo});
  bus(2).setTracing(true);
  startInOp({byteIo}, {2});
  send(0, "Out", 7, 2);
  bus(0).dropFrames(1);
  bus(2).setErrorFlag(0, true);
  EXPECT_EQ(errorsOf(2, 2), "2/0/3 2/0/3");
  EXPECT_EQ(errorsOf(2, 0), "0/*/1");
  EXPECT_TRUE(bus(2).outputs(0) == Bytes{7} && bus(0).outputs(0) == Bytes{0});
  EXPECT_THAT(callTexts(Call::deviceOpen, bus(2)), testing::StartsWith("open(\"/dev/EtherCAT2\", 2) = "));
  EXPECT_EQ(bus(2).openDeviceFiles(), 1);
  bus(2).clearTrace();
  expectPrint("", "", [] { EXPECT_TRUE(igh_master_uninitialize(9)); });
  expectPrint("ecrt_master_deactivate\necrt_release_master\n", "", [] { igh_master_uninitialize(2); });
  EXPECT_EQ(calls(bus(2)), "master_deactivate close release_master");
  EXPECT_FALSE(igh_master_exchange(2, nullptr, nullptr));
  cycle();                                               // the other goes on
  EXPECT_TRUE(igh_master_initialize(2, 3000000, false)); // afresh
  std::uint32_t period = 0;
  EXPECT_TRUE(igh_master_get_period(2, &period));
  EXPECT_EQ(period, 3000000U);
}

TEST_F(Scenario, DescriptionFilesAddUpAndUnusablePathsLoseNothing) {
  const Device level{0x20, {}, {{"Level", "UINT"}}};
  bus().addSlave(slaveOf(level));
  build({byteIo});
  EXPECT_TRUE(describe({level}));
  for (const char* const path : {"/tmp", "/nowhere/at/all.xml", static_cast<const char*>(nullptr)}) {
    quietly([path] { EXPECT_FALSE(igh_master_append_eni(0, path)); });
  }
  bringUp();
  EXPECT_EQ(handle(0, "Level", true), 0U);
  EXPECT_EQ(handle(1, "In", true), 1U);
}

TEST_F(Scenario, MasterThatCouldNotBeReservedFailsQuietlyLater) {
  bus().failNext(Call::requestMaster);
  bus().failNext(Call::deviceOpen);
  build({byteIo});
  std::uint32_t count = 9;
  expectPrint("", "", [&] {
    EXPECT_FALSE(igh_master_scan(0, &count));
    EXPECT_TRUE(igh_master_config_all_slave(0));
    EXPECT_FALSE(igh_master_active(0));
    cycle(3);
    EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "In", true, &count));
    igh_master_destroy_pdo_info(0, 0, true);
    igh_master_uninitialize(0);
  });
  EXPECT_EQ(bus().callCount(Call::receive) + bus().callCount(Call::deviceClose), 0U);
}
