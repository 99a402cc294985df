// The motion example on its two simulated drives, with and without faults.
#include "Program.h"

namespace {

Outcome move(const std::string& bus, const std::string& cycles) {
  return runProgram({EXAMPLE_MOTION, machine("motion_drive.xml"), cycles}, 0, machine(bus));
}

TEST(MotionExample, MovesBothAxesTogetherAndBringsThemToRest) {
  const Outcome outcome = move("motion.json", "2500");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  // At rest where they began; both lag alike on the same sine.
  EXPECT_THAT(outcome.out,
              testing::ContainsRegex("Axis 0: at -?[01], at most [1-9][0-9]+ counts behind, off"));
  EXPECT_THAT(outcome.out,
              testing::ContainsRegex("Axis 1: at -?[01], at most [1-9][0-9]+ counts behind, off"));
}

TEST(MotionExample, StopsBothAxesWhenOneLosesItsPower) {
  const Outcome outcome = move("motion_faults.json", "5000");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.err, testing::HasSubstr("motion: stopped for a fault: 4 frames in a row"));
  EXPECT_THAT(outcome.out, testing::ContainsRegex("Axis 0: at [1-9][0-9]+, .* off"));
  EXPECT_THAT(outcome.out, testing::ContainsRegex("Axis 1: at [1-9][0-9]+, .* off"));
}

} // namespace
