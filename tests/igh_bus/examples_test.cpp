// The example programs, run as a user runs them.
#include "Program.h"

namespace {

void expectShown(const std::string& line, const std::string& bus, int status, const std::string& pattern) {
  const auto outcome = runProgram(line, 0, bus);
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_THAT(outcome.out + outcome.err, testing::ContainsRegex(pattern));
}

TEST(Examples, MinimalMovesAPositionToTheDriveAndBack) {
  // Sent in cycle 1997, mirrored by the drive into the next frame, received in cycle 1999.
  expectShown("'" EXAMPLE_MINIMAL "' @servo_drive.xml", "machine.json", 0,
              "Position actual value: 1997\nAL state: 8\n");
}

TEST(Examples, FollowClockLearnsTheRateOfTheReference) {
  expectShown("'" EXAMPLE_FOLLOW_CLOCK "' @servo_drive.xml -n 12000", "machine.json", 0,
              "\nstate = 8, dc_differ_ns = .*\ncycle 12000: offset -?[0-9]+ ns, moving by -(4\\.9|5\\.0)");
}

TEST(Examples, PythonRunsTheMainJobThroughTheSameLibrary) {
  if (std::string(PYTHON).empty())
    GTEST_SKIP() << "no python3, or sanitizers in the library";
  expectShown(
      "'" PYTHON "' '" EXAMPLE_PYTHON "' --library '" IGH_MASTER_LIBRARY "' --cycles 500 @servo_drive.xml",
      "machine.json", 0,
      "8 slaves, 491 callbacks, 0 errors\nPosition actual value: 497\nMode of operation: 8\nAL state: 8\n");
}

TEST(Examples, MotionMovesBothAxesTogetherAndBringsThemToRest) {
  const std::string axis = "at -?[01], at most [1-9][0-9]+ counts behind, off"; // at rest where it began
  expectShown("'" EXAMPLE_MOTION "' @motion_drive.xml 2500", "motion.json", 0,
              "Axis 0: " + axis + "[^\n]*\nAxis 1: " + axis);
}

TEST(Examples, MotionStopsBothAxesWhenOneLosesItsPower) {
  expectShown("'" EXAMPLE_MOTION "' @motion_drive.xml 5000", "motion_faults.json", 3,
              "Axis 0: at [1-9][0-9]+, [^\n]* off[^\n]*\nAxis 1: at [1-9][0-9]+, [^\n]* off[^\n]*\n"
              ".*motion: stopped for a fault: 4 frames in a row");
}

} // namespace
