#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, RescanVoidsHandlesAndForgetsTheirKeys) {
  start({byteIo, byteIo});
  send(0, "Out", 5);
  send(1, "Out", 6);
  EXPECT_EQ(handle(1, "In", true), 2U);
  cycleUntil(8);
  EXPECT_EQ(value(2), 6.0);

  quietly([] { igh_master_scan(0, nullptr); });
  EXPECT_FALSE(igh_master_pdo_send(0, 1, 0));
  EXPECT_EQ(handle(1, "In", true), 0U);
  EXPECT_EQ(handle(1, "Out", false), 1U);
  // The image is still that of the old slaves, and entries of the new ones have no place in it yet.
  igh_master_pdo_send(0, 1, 9);
  cycle(2);
  EXPECT_EQ(bus().outputs(0), Bytes{5});
  EXPECT_EQ(value(0), 0.0);
  expectPrint("ecrt_master_deactivate\nslave 1 do not config\n", "",
              [] { EXPECT_FALSE(igh_master_active(0)); });
  cycle(1);               // no domain and no configurations: only what needs neither is called
  outOfOrderExpected = 2; // receive and send, just now
  igh_master_config_all_slave(0);
  EXPECT_TRUE(igh_master_active(0));
  cycleUntil(8);
  EXPECT_EQ(value(0), 9.0);
}

// The real master frees every handle on deactivation, and some releases map no image the second time.
class Reactivation : public Scenario, public testing::WithParamInterface<bool> {
protected:
  Reactivation() { bus().setReactivationUnmapped(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(UnmappedImage, Reactivation, testing::Bool());

TEST_P(Reactivation, ActivatesAnActiveMasterWithTheSameHandles) {
  startInOp({byteIo, switcher});
  const std::uint32_t out = handle(0, "Out", false);
  const std::string configure = "master_slave_config slave_config_pdos ";
  const std::string once =
      configure + configure + "master_create_domain domain_reg_pdo_entry_list master_activate domain_data";
  for (std::uint8_t again = 1; again < 4; ++again) {
    bus().setTracing(true);
    bus().clearTrace();
    expectPrint("ecrt_master_deactivate\n", "", [] { EXPECT_TRUE(igh_master_active(0)); });
    EXPECT_EQ(calls(), "master_deactivate " + once +
                           (GetParam() ? " master_deactivate release_master request_master " + once : ""));
    igh_master_pdo_send(0, out, again);
    cycleUntil(8);
    EXPECT_EQ(bus().outputs(0), Bytes{again});
  }
}

TEST_P(Reactivation, ScanConfigureActivateFollowsAChangedBus) {
  startInOp({byteIo, byteIo});
  for (const unsigned int slaves : {3U, 1U}) {
    bus().insertSlave(1, slaveOf(byteIo));
    while (bus().slaveCount() > slaves) {
      bus().removeSlave(0);
    }
    EXPECT_THAT(errorsOf(30), testing::HasSubstr(slaves == 3 ? "0/*/4" : "0/*/5"));
    std::uint32_t count = 0;
    quietly([&] { EXPECT_TRUE(igh_master_scan(0, &count)); });
    EXPECT_EQ(count, slaves);
    cycle(2);
    igh_master_config_all_slave(0);
    cycle(2);
    quietly([] { EXPECT_TRUE(igh_master_active(0)); });
    for (std::uint32_t slave = 0; slave < slaves; ++slave) {
      send(slave, "Out", 10 + slave);
      handle(slave, "In", true);
    }
    cycleUntil(8);
    for (std::uint32_t slave = 0; slave < slaves; ++slave) {
      EXPECT_EQ(value(handle(slave, "In", true)), 10 + slave);
    }
    EXPECT_EQ(errorsOf(3), "");
  }
}

TEST_F(Scenario, ImageThatCannotBeMappedEndsAReactivationAndIsLeftAloneInTheFirst) {
  bus().setImageNeverMapped(true);
  start({byteIo});
  std::uint32_t request = 0;
  outOfOrderExpected = 1; // made while the master is active
  EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 1, DATA_TYPE_UINT, 0, false, &request));
  EXPECT_TRUE(igh_master_sdo_send(0, request, 1, nullptr));
  send(0, "Out", 7);
  const std::uint32_t in = handle(0, "In", true);
  bus().setInputs(0, {8});
  cycleUntil(8);
  EXPECT_EQ(value(in), 0.0);
  expectPrint("ecrt_master_deactivate\n", "Failed to map the process image after a re-activation.\n",
              [] { EXPECT_FALSE(igh_master_active(0)); });
  EXPECT_FALSE(bus().active());
  expectPrint("slave 1 do not config\n", "", [] { EXPECT_FALSE(igh_master_active(0)); });
  // The requests died with the configurations, and nothing asks for them again.
  expectPrint("SDO don't create with writable flag\n", "",
              [&] { EXPECT_FALSE(igh_master_sdo_send(0, request, 1, nullptr)); });
  bus().setImageNeverMapped(false);
  bus().setReactivationUnmapped(false);
  igh_master_config_all_slave(0);
  EXPECT_TRUE(igh_master_active(0));
  cycleUntil(8);
}
