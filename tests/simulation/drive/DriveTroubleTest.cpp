#include "DriveBench.h"

#include <array>
#include <ethercat_simulation.h>

using namespace bench;

namespace {

using DriveTroubleTest = DriveBench;

TEST_F(DriveTroubleTest, AFaultOfTheDriveHoldsWhileItsCauseLasts) {
  start(9);
  commands.velocity = 50'000;
  ASSERT_EQ(switchOnFully(), ENABLED);
  run(100);
  const auto kept = [this](std::uint8_t subindex) { return bus().objectValue(0, 0x1003, subindex); };
  EXPECT_FALSE(bus().setDriveTrouble(0, sim::DriveTrouble::fault, true, 0));
  EXPECT_FALSE(bus().setDriveTrouble(1, sim::DriveTrouble::fault, true, 0x3220));
  ASSERT_TRUE(bus().setDriveTrouble(0, sim::DriveTrouble::fault, true, 0x3220));
  EXPECT_EQ(command(ENABLE), BRAKING);
  EXPECT_EQ(command(ENABLE, 100), FAILED);
  EXPECT_EQ(feedback.error, 0x3220);
  EXPECT_EQ(feedback.velocity, 0);
  EXPECT_EQ(kept(0), (std::vector<std::uint8_t>{1}));
  EXPECT_EQ(kept(1), (std::vector<std::uint8_t>{0x20, 0x32, 0, 0}));
  EXPECT_EQ(bus().objectValue(0, 0x1001, 0), (std::vector<std::uint8_t>{0x05})) << "of the voltage";
  EXPECT_EQ(command(RESET), FAILED) << "its cause is still there";
  bus().setDriveTrouble(0, sim::DriveTrouble::fault, false);
  EXPECT_EQ(command(RESET), FAILED) << "no new edge";
  command(OFF);
  EXPECT_EQ(command(RESET), DISABLED);
  EXPECT_EQ(feedback.error, 0);
  EXPECT_EQ(bus().objectValue(0, 0x1001, 0), (std::vector<std::uint8_t>{0}));
  // A cycle of a schedule is enough; the latest error comes first, and the list can be cleared.
  sim::Fault fault;
  fault.kind = sim::FaultKind::driveTrouble;
  fault.every = 1;
  fault.errorCode = 0x4210;
  ASSERT_TRUE(bus().addFault(fault));
  run(4);
  EXPECT_EQ(feedback.error, 0x4210);
  EXPECT_EQ(kept(0), (std::vector<std::uint8_t>{2}));
  EXPECT_EQ(kept(1), (std::vector<std::uint8_t>{0x10, 0x42, 0, 0}));
  EXPECT_EQ(kept(2), (std::vector<std::uint8_t>{0x20, 0x32, 0, 0}));
  bus().setObjectValue(0, 0x1003, 0, {0});
  run(1);
  EXPECT_EQ(kept(2), (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

TEST_F(DriveTroubleTest, ABlockedAxisFallsBehindAndFails) {
  start(8, 2'000);
  ASSERT_EQ(switchOnFully(), ENABLED);
  ramp = 100;
  run(300);
  ASSERT_EQ(feedback.velocity, 100'000);
  bus().setObjectValue(0, 0x6065, 0, {0xE8, 3, 0, 0}); // 1000 counts
  bus().setObjectValue(0, 0x6066, 0, {20, 0});         // ms
  bus().setDriveTrouble(0, sim::DriveTrouble::blockedAxis, true);
  run(8);
  const std::int32_t held = feedback.position;
  run(12);
  EXPECT_EQ(feedback.position, held);
  EXPECT_EQ(feedback.torque, 3'000) << "it tries";
  EXPECT_EQ(feedback.statusword & 0x206F, 0x2000 | ENABLED) << "behind, but not for long enough";
  run(20);
  EXPECT_EQ(feedback.statusword & 0x6F, FAILED);
  EXPECT_EQ(feedback.error, 0x8611);
}

TEST_F(DriveTroubleTest, ALimitSwitchLetsTheAxisMoveAwayOnly) {
  start(9);
  for (const auto& [mode, forward, back] :
       {std::array<std::int8_t, 3>{8, 1, -1}, {9, 1, -1}, {9, -1, 1}, {10, 1, -1}}) {
    commands.mode = mode;
    const auto command = [&, m = mode](int way) {
      commands.velocity = way * 50'000;
      commands.torque = static_cast<std::int16_t>(way * 50);
      ramp = m == 8 ? way * 50 : 0;
    };
    commands.position = feedback.position;
    ASSERT_EQ(switchOnFully(), ENABLED);
    command(forward);
    run(60);
    ASSERT_GT(feedback.velocity * forward, 0);
    const auto side = forward > 0 ? sim::DriveTrouble::positiveLimit : sim::DriveTrouble::negativeLimit;
    bus().setDriveTrouble(0, side, true);
    run(100);
    EXPECT_EQ(feedback.velocity, 0) << int{mode};
    const std::int32_t held = feedback.position;
    run(101);
    EXPECT_EQ(feedback.position, held) << int{mode} << ": no creeping";
    EXPECT_EQ(feedback.statusword & 0x086F, 0x0800 | ENABLED);
    EXPECT_EQ(bus().objectValue(0, 0x60FD, 0)[0], forward > 0 ? 2 : 1);
    commands.position = feedback.position;
    command(back);
    run(60);
    EXPECT_GT(feedback.velocity * back, 0) << int{mode};
    bus().setDriveTrouble(0, side, false);
    command(0);
    this->command(OFF, 300);
  }
}

TEST_F(DriveTroubleTest, ALimitSwitchEndsASetPoint) {
  start(1);
  ASSERT_EQ(switchOnFully(), ENABLED);
  commands.position = 1'000'000;
  command(ENABLE | 0x10, 200);
  ASSERT_EQ(feedback.velocity, 100'000);
  bus().setDriveTrouble(0, sim::DriveTrouble::positiveLimit, true);
  run(4);
  const std::int32_t seen = feedback.position;
  run(200);
  const std::int32_t stopped = feedback.position;
  EXPECT_GT(stopped, seen) << "it does not turn back";
  bus().setDriveTrouble(0, sim::DriveTrouble::positiveLimit, false);
  run(100);
  EXPECT_EQ(feedback.position, stopped) << "nor goes on by itself";
}

TEST_F(DriveTroubleTest, InputsOfTheDriveStopItOrTakeItsPower) {
  start(9);
  commands.velocity = 100'000;
  ASSERT_EQ(switchOnFully(), ENABLED);
  run(200);
  bus().setDriveTrouble(0, sim::DriveTrouble::quickStop, true);
  EXPECT_EQ(command(ENABLE), STOPPING);
  EXPECT_EQ(command(ENABLE, 100), DISABLED);
  EXPECT_EQ(command(SHUTDOWN), DISABLED) << "the input is still there";
  bus().setDriveTrouble(0, sim::DriveTrouble::quickStop, false);
  ASSERT_EQ(switchOnFully(), ENABLED);
  run(200);
  ASSERT_EQ(feedback.velocity, 100'000);
  bus().setDriveTrouble(0, sim::DriveTrouble::safeTorqueOff, true);
  EXPECT_EQ(command(ENABLE, 10), DISABLED);
  EXPECT_EQ(feedback.statusword & 0x10, 0) << "no voltage";
  EXPECT_EQ(feedback.torque, 0);
  EXPECT_NEAR(feedback.velocity, 99'000, 1'000) << "it coasts";
  EXPECT_EQ(command(SHUTDOWN), DISABLED);
  EXPECT_EQ(bus().objectValue(0, 0x60FD, 0)[0], 8);
  bus().setDriveTrouble(0, sim::DriveTrouble::safeTorqueOff, false);
  EXPECT_EQ(command(SHUTDOWN), READY);
  // Power that goes while it brakes: it coasts as well.
  ASSERT_EQ(command(ENABLE, 300), ENABLED);
  bus().setDriveTrouble(0, sim::DriveTrouble::fault, true);
  run(1);
  bus().setDriveTrouble(0, sim::DriveTrouble::safeTorqueOff, true);
  EXPECT_EQ(command(ENABLE, 30), BRAKING);
  EXPECT_GT(feedback.velocity, 90'000);
}

TEST_F(DriveTroubleTest, EachKindOfAScheduleShowsAndPasses) {
  const struct {
    const char* kind;
    int state, inputs; // bits of the statusword, 0x60FD
  } cases[] = {{"drive_fault", BRAKING, 0},
               {"blocked_axis", 0x0800 | ENABLED, 0},
               {"positive_limit", 0x0800 | ENABLED, 2},
               {"negative_limit", ENABLED, 1},
               {"quick_stop", STOPPING, 0},
               {"safe_torque_off", DISABLED, 8}};
  start(9);
  commands.velocity = 50'000;
  unsigned int cycle = 20;
  const auto runTo = [&](unsigned int end) {
    run(end - cycle);
    cycle = end;
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.kind);
    const unsigned int at = cycle + 200;
    const std::string schedule = R"({"faults":[{"slave":0,"for":30,"kind":")" + std::string(each.kind) +
                                 R"(","at":)" + std::to_string(at) + "}]}";
    ASSERT_EQ(ethercat_simulation_configure(0, schedule.c_str()), 0) << ethercat_simulation_last_error();
    ASSERT_EQ(switchOnFully(), ENABLED);
    cycle += 8;
    runTo(at - 1);
    ASSERT_EQ(feedback.velocity, 50'000);
    runTo(at + 6);
    EXPECT_EQ(feedback.statusword & 0x086F, each.state);
    EXPECT_EQ(bus().objectValue(0, 0x60FD, 0)[0], each.inputs);
    runTo(at + 100);
    EXPECT_EQ(bus().objectValue(0, 0x60FD, 0)[0], 0);
    command(OFF);
    command(RESET);
    ASSERT_EQ(switchOnFully(), ENABLED);
    cycle += 14;
    runTo(at + 300);
    EXPECT_EQ(feedback.velocity, 50'000);
    EXPECT_EQ(feedback.statusword & 0x086F, ENABLED);
    command(OFF, 100);
    cycle += 100;
  }
}

} // namespace
