#include "Fixture.h"

namespace scenario {
namespace {

TEST_F(Scenario, RescanVoidsHandlesAndForgetsTheirKeys) {
  start({byteIo, byteIo});
  EXPECT_EQ(handle(0, "Out", false), 0U);
  EXPECT_EQ(handle(1, "Out", false), 1U);
  EXPECT_EQ(handle(1, "In", true), 2U);
  igh_master_pdo_send(0, 0, 5);
  igh_master_pdo_send(0, 1, 6);
  cycleUntil(8);
  EXPECT_EQ(value(2), 6.0);

  outOfOrderExpected = true; // nothing but the next activation deactivates
  capture([] { igh_master_scan(0, nullptr); });
  double unused = 0;
  EXPECT_FALSE(igh_master_pdo_recv(0, 2, &unused));
  EXPECT_EQ(handle(1, "In", true), 0U);
  EXPECT_EQ(value(0), 0.0);
  // The image is still that of the old slaves, and entries of the new ones have no place in it yet.
  EXPECT_EQ(handle(1, "Out", false), 1U);
  igh_master_pdo_send(0, 1, 9);
  cycle(2);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{5}));
  EXPECT_EQ(value(0), 0.0);
  EXPECT_EQ(capture([] { EXPECT_FALSE(igh_master_active(0)); }).out,
            "ecrt_master_deactivate\nslave 1 do not config\n");
  cycle(1); // no domain and no configurations: only what needs neither is called
  igh_master_config_all_slave(0);
  EXPECT_TRUE(igh_master_active(0));
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(1), (std::vector<std::uint8_t>{9}));
  EXPECT_EQ(value(0), 9.0);
}

// The real master frees every handle on deactivation, and some releases map no image the second time.
class Reactivation : public Scenario, public testing::WithParamInterface<bool> {
protected:
  Reactivation() { bus().setReactivationUnmapped(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Platform, Reactivation, testing::Bool(), [](const auto& parameter) {
  return parameter.param ? "UnmapsTheImage" : "MapsTheImage";
});

TEST_P(Reactivation, ActivatesAnActiveMasterWithTheSameHandles) {
  start({byteIo, switcher});
  const std::uint32_t out = handle(0, "Out", false);
  cycle(20);
  igh_master_pdo_send(0, out, 1);
  bus().setTracing(true);
  for (int again = 0; again < 3; ++again) {
    bus().clearTrace();
    const Printed printed = capture([] { EXPECT_TRUE(igh_master_active(0)); });
    EXPECT_EQ(printed.out, "ecrt_master_deactivate\n");
    EXPECT_EQ(printed.err, "");
    const std::string once = "master_slave_config slave_config_pdos master_slave_config slave_config_pdos "
                             "master_create_domain domain_reg_pdo_entry_list master_activate domain_data";
    EXPECT_EQ(calls(), "master_deactivate " + once +
                           (GetParam() ? " master_deactivate release_master request_master " + once : ""));
    _ETHERCAT_COMM_DIAG_INFO last{77, 0, 0, 0, 0, 0};
    igh_master_get_comm_diag_info(0, COMM_DIAG_LAST, &last);
    EXPECT_EQ(last.time, 0U);
    cycle(20);
  }
  EXPECT_EQ(bus().alState(0), 8);
}

TEST_P(Reactivation, ScanConfigureActivateFollowsAChangedBus) {
  outOfOrderExpected = true; // the slaves are configured while the master is still active
  start({byteIo, byteIo});
  cycleUntil(8);
  for (const unsigned int slaves : {3U, 1U}) {
    while (bus().slaveCount() < slaves) {
      bus().insertSlave(1, slaveOf(byteIo));
    }
    while (bus().slaveCount() > slaves) {
      bus().removeSlave(0);
    }
    EXPECT_THAT(errorsOf(30), testing::HasSubstr(slaves == 3 ? "0/*/4" : "0/*/5"));
    std::uint32_t count = 0;
    capture([&] {
      EXPECT_TRUE(igh_master_scan(0, &count));
      cycle(2);
      igh_master_config_all_slave(0);
      cycle(2);
      EXPECT_TRUE(igh_master_active(0));
    });
    EXPECT_EQ(count, slaves);
    for (std::uint32_t slave = 0; slave < slaves; ++slave) {
      igh_master_pdo_send(0, handle(slave, "Out", false), 10 + slave);
      handle(slave, "In", true);
    }
    cycleUntil(8);
    for (std::uint32_t slave = 0; slave < slaves; ++slave) {
      EXPECT_EQ(value(handle(slave, "In", true)), 10 + slave);
    }
    EXPECT_EQ(errorsOf(3), "");
  }
}

TEST_F(Scenario, ImageThatCannotBeMappedAgainEndsTheActivation) {
  start({byteIo});
  cycleUntil(8);
  bus().setImageNeverMapped(true);
  const Printed printed = capture([] { EXPECT_FALSE(igh_master_active(0)); });
  EXPECT_EQ(printed.out, "ecrt_master_deactivate\n");
  EXPECT_THAT(printed.err, testing::MatchesRegex("[^\n]+\n"));
  EXPECT_FALSE(bus().active());
  EXPECT_EQ(capture([] { EXPECT_FALSE(igh_master_active(0)); }).out, "slave 1 do not config\n");
}

TEST_F(Scenario, FirstActivationWithoutImageCyclesAndCopiesNothing) {
  bus().setImageNeverMapped(true);
  start({byteIo});
  igh_master_pdo_send(0, handle(0, "Out", false), 7);
  const std::uint32_t in = handle(0, "In", true);
  bus().setInputs(0, {8});
  cycleUntil(8);
  EXPECT_EQ(value(in), 0.0);
  EXPECT_EQ(bus().callCount(Call::activate), 1U);
}

} // namespace
} // namespace scenario
