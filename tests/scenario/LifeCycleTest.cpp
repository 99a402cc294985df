#include "Fixture.h"

namespace scenario {
namespace {

const char* const rangeText = "Ethercat exchange period should between 100000 and 4000000000.\n";

TEST_F(Scenario, PeriodLimitsAreHeldAndAnExistingMasterKeepsItsPeriod) {
  masters = {0, 1};
  std::uint32_t period = 1;
  for (const std::uint32_t refused : {0U, 99999U, 4000000001U, 0xFFFFFFFFU}) {
    EXPECT_EQ(capture([&] { EXPECT_FALSE(igh_master_initialize(0, refused, false)); }).out, rangeText)
        << refused;
    EXPECT_FALSE(igh_master_get_period(0, &period));
  }
  EXPECT_EQ(period, 1U);
  bus(0);
  bus(1);
  EXPECT_TRUE(igh_master_initialize(0, 100000, false));
  EXPECT_TRUE(igh_master_initialize(1, 4000000000U, false));
  EXPECT_TRUE(igh_master_initialize(0, 2000000, true));
  EXPECT_EQ(bus(0).callCount(Call::requestMaster), 1U);
  EXPECT_TRUE(igh_master_get_period(0, &period));
  EXPECT_EQ(period, 100000U);
  EXPECT_TRUE(igh_master_get_period(1, &period));
  EXPECT_EQ(period, 4000000000U);
  std::uint64_t offset = 1;
  EXPECT_TRUE(igh_master_get_system_base_offset(0, &offset));
  EXPECT_EQ(offset, 0U);
  EXPECT_FALSE(igh_master_get_period(0, nullptr));
  EXPECT_FALSE(igh_master_get_system_base_offset(0, nullptr));
  EXPECT_FALSE(igh_master_enable_eoe_function(0, 0, true));
}

TEST_F(Scenario, MasterTwoOwnsTheSecondDeviceFileUntilItIsReleasedBehindIt) {
  bus(2).setTracing(true);
  start({byteIo}, {2});
  EXPECT_THAT(callText(Call::deviceOpen, bus(2)), testing::StartsWith("open(\"/dev/EtherCAT2\", 2) = "));
  EXPECT_EQ(bus(2).openDeviceFiles(), 1);
  EXPECT_FALSE(igh_master_set_exchange_mode(2, true)); // active
  bus(2).clearTrace();

  EXPECT_EQ(capture([] { EXPECT_TRUE(igh_master_uninitialize(9)); }).out, "");
  const Printed printed = capture([] { EXPECT_TRUE(igh_master_uninitialize(2)); });
  EXPECT_EQ(printed.out, "ecrt_master_deactivate\necrt_release_master\n");
  EXPECT_EQ(calls(bus(2)), "master_deactivate close release_master");
  std::uint32_t period = 0;
  EXPECT_FALSE(igh_master_get_period(2, &period));
  EXPECT_FALSE(igh_master_exchange(2, nullptr, nullptr));
  EXPECT_TRUE(igh_master_uninitialize(2));

  EXPECT_TRUE(igh_master_initialize(2, 3000000, false));
  EXPECT_TRUE(igh_master_get_period(2, &period));
  EXPECT_EQ(period, 3000000U);
}

TEST_F(Scenario, DescriptionFilesAddUpAndUnusablePathsLoseNothing) {
  Device level{0x20, {}, {{"Level", "UINT"}}, "", false};
  build({byteIo, level});
  level.described = true;
  EXPECT_TRUE(describe({level}));
  capture([] {
    EXPECT_FALSE(igh_master_append_eni(0, nullptr));
    EXPECT_FALSE(igh_master_append_eni(0, "/tmp"));
    EXPECT_FALSE(igh_master_append_eni(0, "/nowhere/at/all.xml"));
  });
  bringUp();
  EXPECT_EQ(handle(0, "In", true), 0U);
  EXPECT_EQ(handle(1, "Level", true), 1U);
}

// What cannot be reserved or opened at the start shows up later, as failures of scan and activation.
TEST_F(Scenario, MasterThatCouldNotBeReservedFailsQuietly) {
  bus().failNext(Call::requestMaster);
  bus().failNext(Call::deviceOpen);
  build({byteIo});
  std::uint32_t count = 9;
  std::uint32_t handle = 9;
  const Printed printed = capture([&] {
    EXPECT_FALSE(igh_master_scan(0, &count));
    EXPECT_TRUE(igh_master_config_all_slave(0));
    EXPECT_FALSE(igh_master_active(0));
    cycle(3);
    EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "In", true, &handle));
    igh_master_destroy_pdo_info(0, 0, true);
    igh_master_uninitialize(0);
  });
  EXPECT_EQ(printed.out + printed.err, "");
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(bus().callCount(Call::receive) + bus().callCount(Call::deviceClose), 0U);
}

} // namespace
} // namespace scenario
