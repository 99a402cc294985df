#include "Fixture.h"

#include <cerrno>

namespace scenario {
namespace {

const char* const registrationText = "PDO entry registration failed!\n";
const Device clocked{
    0x30,
    {{"Out", "USINT"}},
    {{"In", "USINT"}},
    "<Dc><OpMode><Name>Free</Name></OpMode><OpMode><Name>DC</Name><AssignActivate>#x0300</AssignActivate>"
    "</OpMode></Dc>"};

TEST_F(Scenario, EverySlaveMustBeConfiguredBeforeActivation) {
  build({byteIo, switcher});
  const Printed printed = capture([] {
    EXPECT_FALSE(igh_master_config_slave(0, 0)); // no scan yet
    igh_master_scan(0, nullptr);
    EXPECT_TRUE(igh_master_config_slave(0, 0));
    EXPECT_FALSE(igh_master_config_slave(0, 2));
    EXPECT_FALSE(igh_master_active(0));
  });
  EXPECT_THAT(printed.out, testing::EndsWith("{0xff}\n};\n\nslave 2 do not config\n"));
  EXPECT_EQ(printed.err, "");
  EXPECT_TRUE(igh_master_config_slave(0, 1)); // the others keep their configuration
  EXPECT_TRUE(igh_master_active(0));
}

TEST_F(Scenario, FirstActivationMakesTheseCallsWithTheseArguments) {
  build({byteIo, switcher, clocked, clocked}, {0, 2000000, true, true});
  capture([] { igh_master_scan(0, nullptr); });
  bus().setTracing(true);
  igh_master_config_all_slave(0);
  EXPECT_EQ(calls(), "master_slave_config slave_config_pdos master_slave_config slave_config_pdos "
                     "master_slave_config slave_config_pdos master_slave_config slave_config_pdos");
  EXPECT_THAT(callText(Call::slaveConfig),
              testing::StartsWith("ecrt_master_slave_config(0, 0, 0x00000002, 0x00000010)"));
  EXPECT_EQ(
      callText(Call::configPdos),
      "ecrt_slave_config_pdos(0:0, EC_END, [2 output 0x1600(0x7000:01/8), 3 input 0x1A00(0x6000:01/8)]) = 0");
  EXPECT_EQ(bus().trace()[3].text, "ecrt_slave_config_pdos(0:1, EC_END, NULL) = 0");

  bus().clearTrace();
  const Printed printed = capture([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_EQ(calls(), "master_create_domain domain_reg_pdo_entry_list slave_config_dc slave_config_dc "
                     "master_select_reference_clock master_activate domain_data");
  EXPECT_EQ(callText(Call::configDc), "ecrt_slave_config_dc(0:2, 0x0300, 2000000, 1000000, 0, 0)");
  EXPECT_EQ(callText(Call::selectReferenceClock), "ecrt_master_select_reference_clock(0:2) = 0");
  EXPECT_EQ(printed.out,
            "uiAssignActivate = 300, config dc for slave 0:2, circle0=2000000, shift0 = 1000000, "
            "circle1=0, shift1 = 0\n"
            "uiAssignActivate = 300, config dc for slave 0:3, circle0=2000000, shift0 = 1000000, "
            "circle1=0, shift1 = 0\n");
  EXPECT_EQ(printed.err, "");
}

TEST_F(Scenario, ReferenceClockIsChosenOnlyToFollowItAndAFailedChoiceIsNoFailure) {
  masters = {0, 1};
  build({clocked}, {0, 1000000, true, true});
  bus().failNext(Call::selectReferenceClock, -EINVAL);
  EXPECT_EQ(bringUp().err, "Failed to select reference clock: Invalid argument\n");
  start({clocked}, {1, 1000000, true, false});
  EXPECT_EQ(bus(1).callCount(Call::configDc), 1U);
  EXPECT_EQ(bus(1).callCount(Call::selectReferenceClock), 0U);
}

TEST_F(Scenario, ClocksStayOffForGoodOnceAnActivationFoundNoneOrWhenNotEnabled) {
  masters = {0, 1};
  start({clocked}, {1, 1000000, false, true});
  EXPECT_EQ(bus(1).callCount(Call::configDc), 0U);

  build({byteIo}, {0, 1000000, true, true});
  EXPECT_TRUE(describe({clocked}));
  bringUp();
  outOfOrderExpected = true; // an active bus is configured anew
  bus().addSlave(slaveOf(clocked));
  cycle(20);
  bringUp();
  EXPECT_EQ(bus().callCount(Call::activate), 3U); // once more on a new reservation
  EXPECT_EQ(bus().callCount(Call::configDc), 0U);
}

TEST_F(Scenario, RefusedConfigurationPrintsALineAndIsNoFailureOfTheCall) {
  build({byteIo, byteIo});
  capture([] { igh_master_scan(0, nullptr); });
  bus().failNext(Call::configPdos, -ENOENT);
  bus().failNext(Call::slaveConfig, 0, 1);
  EXPECT_EQ(capture([] { EXPECT_TRUE(igh_master_config_all_slave(0)); }).err,
            "Failed to configure PDOs.\nFailed to configure PDOs.\n");
  EXPECT_EQ(bus().callCount(Call::configPdos), 1U); // a null configuration is not used
  EXPECT_EQ(capture([] { EXPECT_FALSE(igh_master_active(0)); }).out, "slave 2 do not config\n");
  EXPECT_EQ(capture([] { igh_master_config_all_slave(0); }).err, "");
  EXPECT_TRUE(igh_master_active(0));
}

TEST_F(Scenario, FailedRegistrationActivatesNothingAndCanBeRepeated) {
  build({byteIo});
  capture([] { igh_master_scan(0, nullptr); });
  igh_master_config_all_slave(0);
  bus().failNext(Call::createDomain);
  EXPECT_EQ(capture([] { EXPECT_FALSE(igh_master_active(0)); }).err, registrationText);
  bus().failNext(Call::regPdoEntryList, -ENOENT);
  EXPECT_EQ(capture([] { EXPECT_FALSE(igh_master_active(0)); }).err, registrationText);
  EXPECT_EQ(bus().callCount(Call::regPdoEntryList), 1U);
  EXPECT_EQ(bus().callCount(Call::activate), 0U);
  bus().failNext(Call::activate, -EIO);
  const Printed printed = capture([] { EXPECT_FALSE(igh_master_active(0)); });
  EXPECT_EQ(printed.out + printed.err, "");
  EXPECT_TRUE(igh_master_set_exchange_mode(0, false)); // not active
  EXPECT_TRUE(igh_master_active(0));
  EXPECT_FALSE(igh_master_set_exchange_mode(0, true));
  cycleUntil(8);
}

TEST_F(Scenario, EachRunOfEntriesBetweenGapsIsRegisteredAndMovesItsData) {
  const std::vector<Field> layout{{"gap", "", 8},   {"A", "USINT"}, {"gap 2", "", 16},
                                  {"gap 3", "", 8}, {"B", "UINT"},  {"gap 4", "", 8}};
  std::vector<Field> inputs = layout;
  for (Field& field : inputs) {
    field.name += " in";
  }
  build({{0x40, layout, inputs}, {0x41, {{"C", "USINT"}, {"", "", 8}}, {{"C in", "USINT"}}}});
  bus().setTracing(true);
  bringUp();
  std::string lists;
  for (const auto& entry : bus().trace()) {
    lists += entry.call == Call::regPdoEntryList ? entry.text.substr(entry.text.find('[')) + "\n" : "";
  }
  const std::string first = "0:0 0x00000002 0x00000040 ";
  const std::string second = "0:1 0x00000002 0x00000041 ";
  EXPECT_EQ(lists, "[" + first + "0x7000:02]) = 0\n[" + first + "0x7000:05]) = 0\n[" + first +
                       "0x6000:02]) = 0\n[" + first + "0x6000:05]) = 0\n[" + second + "0x7000:01]) = 0\n[" +
                       second + "0x6000:01]) = 0\n");
  const std::array<std::uint32_t, 3> out{handle(0, "A", false), handle(0, "B", false), handle(1, "C", false)};
  const std::array<std::uint32_t, 3> in{handle(0, "A in", true), handle(0, "B in", true),
                                        handle(1, "C in", true)};
  const std::uint32_t gap = handle(0, "gap", false); // a name like any other, but it never moves
  for (std::size_t i = 0; i < out.size(); ++i) {
    EXPECT_TRUE(igh_master_pdo_send(0, out[i], 0x11 * static_cast<double>(i + 1)));
  }
  igh_master_pdo_send(0, gap, 0xEE);
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{0, 0x11, 0, 0, 0, 0x22, 0, 0}));
  EXPECT_EQ(value(in[0]) + value(in[1]) + value(in[2]), 0x66);
}

TEST_F(Scenario, BusWithoutProcessDataIsRegisteredOnceAndReportsItsWorkingCounterInOp) {
  start({{0x50}});
  EXPECT_EQ(bus().callCount(Call::regPdoEntryList), 1U);
  cycleUntil(8);
  EXPECT_EQ(errorsOf(2), "0/*/1 0/*/1");
}

} // namespace
} // namespace scenario
