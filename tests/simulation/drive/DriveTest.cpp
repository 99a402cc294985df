#include "DriveBench.h"

using namespace bench;

namespace {

using DriveTest = DriveBench;

TEST_F(DriveTest, TheControlwordLeadsThroughThePowerStates) {
  start(9);
  commands.velocity = 100'000;
  const int steps[][3] = {// controlword, state, cycles
                          {ENABLE, DISABLED, 3},  {RESET, DISABLED, 3},      {SHUTDOWN, READY, 3},
                          {OFF, DISABLED, 3},     {SHUTDOWN, READY, 3},      {SWITCH_ON, SWITCHED_ON, 3},
                          {SHUTDOWN, READY, 3},   {ENABLE, ENABLED, 4},      {SWITCH_ON, SWITCHED_ON, 3},
                          {ENABLE, ENABLED, 200}, {QUICK_STOP, STOPPING, 3}, {QUICK_STOP, DISABLED, 100},
                          {SHUTDOWN, READY, 3},   {ENABLE, ENABLED, 4},      {OFF, DISABLED, 3}};
  for (const auto& step : steps) {
    EXPECT_EQ(command(step[0], static_cast<unsigned int>(step[2])), step[1]) << "step " << &step - steps;
  }
  // With option 6 the drive stays in quick stop, and goes on from there; 0 takes the power at once.
  bus().setObjectValue(0, 0x605A, 0, {6, 0});
  switchOnFully();
  EXPECT_EQ(command(QUICK_STOP, 200), STOPPING);
  EXPECT_EQ(command(ENABLE), ENABLED);
  bus().setObjectValue(0, 0x605A, 0, {0, 0});
  ecrt_sdo_request_read(sdo);
  EXPECT_EQ(command(QUICK_STOP, 5), DISABLED);
  EXPECT_EQ(ecrt_sdo_request_state(sdo), EC_REQUEST_SUCCESS);
  EXPECT_EQ(std::memcmp(ecrt_sdo_request_data(sdo), &feedback.statusword, 2), 0);
}

TEST_F(DriveTest, CyclicModesFollowWithTheirLagWithinTheLimits) {
  start(8, 10'000);
  ASSERT_EQ(switchOnFully(), ENABLED);
  ramp = 100; // with 10 ms of lag: 1000 counts behind, beside the cycles of the frames
  run(200);
  EXPECT_NEAR(feedback.velocity, 100'000, 10);
  EXPECT_NEAR(commands.position - feedback.position, 1200, 60);
  EXPECT_EQ(feedback.statusword & 0x1800, 0x1000) << "follows the command";
  ramp = 0;
  run(200);
  EXPECT_EQ(feedback.position, commands.position);

  commands.mode = 9;
  commands.velocity = -20'000'000; // twice the limit
  run(20);
  EXPECT_EQ(feedback.statusword & 0x1800, 0x0800) << "limited by the torque";
  EXPECT_EQ(feedback.torque, -3000);
  run(5000);
  EXPECT_EQ(feedback.velocity, -10'000'000);
  commands.velocity = 0;
  run(5000);

  commands.mode = 10;
  commands.torque = 500;
  run(102);
  EXPECT_NEAR(feedback.velocity, 0.5e6 * 0.090, 2000) << "half the acceleration for 100 ms, less the lag";
  commands.mode = 5;
  run(3);
  EXPECT_EQ(feedback.mode, 10) << "no such mode";
}

TEST_F(DriveTest, ProfilePositionTakesSetPointsByHandshake) {
  start(1);
  ASSERT_EQ(switchOnFully(), ENABLED);
  const auto setPoint = [&](std::int32_t target, int more) {
    commands.position = target;
    command(ENABLE | more | 0x10);
    EXPECT_EQ(feedback.statusword & 0x1000, 0x1000) << "acknowledged";
    command(ENABLE | more);
  };
  setPoint(20'000, 0);
  EXPECT_EQ(feedback.statusword & 0x1400, 0) << "free again, and not there yet";
  run(150);
  EXPECT_EQ(feedback.velocity, 100'000) << "the profile velocity";
  setPoint(-1'000, 0x40); // relative, and after the first one
  EXPECT_EQ(feedback.statusword & 0x1000, 0x1000) << "still waiting";
  run(350);
  EXPECT_EQ(feedback.position, 19'000);
  EXPECT_EQ(feedback.statusword & 0x1400, 0x0400);
  setPoint(500'000, 0);
  setPoint(0, 0x20); // at once
  command(ENABLE | 0x100, 300);
  EXPECT_EQ(feedback.velocity, 0) << "halted";
  EXPECT_GT(feedback.position, 10'000);
  command(ENABLE, 600);
  EXPECT_EQ(feedback.position, 0);
}

TEST_F(DriveTest, FaultsBrakeAndAreResetByARisingEdge) {
  start(8, 2'000);
  bus().setObjectValue(0, 0x6065, 0, {100, 0, 0, 0});
  ASSERT_EQ(switchOnFully(), ENABLED);
  commands.position = 50'000;
  EXPECT_EQ(command(ENABLE | RESET, 5), BRAKING);
  EXPECT_EQ(command(ENABLE | RESET, 100), FAILED) << "an edge before it came to rest does not count";
  EXPECT_EQ(feedback.error, 0x8611);
  command(OFF);
  EXPECT_EQ(command(RESET), DISABLED);
  EXPECT_EQ(feedback.error, 0);
  commands.position = feedback.position;
  ASSERT_EQ(switchOnFully(), ENABLED);
  ramp = 10;
  run(100);
  // The process data stay away: the slave's watchdog takes it out of OP, and the drive fails.
  bus().dropFrames(120);
  run(105);
  EXPECT_EQ(bus().alState(0), 4);
  EXPECT_EQ(bus().registers(0, 0x0134, 2), (std::vector<std::uint8_t>{0x1B, 0}));
  EXPECT_EQ(command(ENABLE, 80), FAILED);
  EXPECT_EQ(bus().alState(0), 8) << "acknowledged and brought back";
  EXPECT_EQ(feedback.error, 0x8100);
  EXPECT_EQ(command(RESET), DISABLED);
  // Without power to lose it only switches off.
  command(SHUTDOWN);
  ASSERT_EQ(command(SWITCH_ON), SWITCHED_ON);
  bus().setAlError(0, 4, 0x0011);
  EXPECT_EQ(command(SWITCH_ON), DISABLED);
}

} // namespace
