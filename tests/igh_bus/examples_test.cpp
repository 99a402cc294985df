// The example programs, run as a user runs them.
#include "Program.h"

using testing::HasSubstr;

namespace {

TEST(Examples, MinimalMovesAPositionToTheDriveAndBack) {
  const auto outcome = runProgram({EXAMPLE_MINIMAL, machine("servo_drive.xml")}, 0, machine("machine.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  // Sent in cycle 1997, mirrored by the drive into the next frame, received in cycle 1999.
  EXPECT_THAT(outcome.out, HasSubstr("Position actual value: 1997\nAL state: 8\n"));
  EXPECT_EQ(runProgram(std::vector<std::string>{EXAMPLE_MINIMAL}).status, 2);
  const auto wrong = runProgram({EXAMPLE_MINIMAL, "/nowhere.xml"}, 0, machine("machine.json"));
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.err, "minimal: the description file was not loaded\n");
}

TEST(Examples, FollowClockLearnsTheRateOfTheReference) {
  const auto outcome = runProgram({EXAMPLE_FOLLOW_CLOCK, machine("servo_drive.xml"), "-n", "12000"}, 0,
                                  machine("machine.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  double ppm = 0;
  const auto line = outcome.out.find("cycle 12000: offset ");
  ASSERT_NE(line, std::string::npos) << outcome.out;
  EXPECT_EQ(std::sscanf(&outcome.out[line], "cycle 12000: offset %*d ns, moving by %lf ppm", &ppm), 1);
  EXPECT_NEAR(ppm, -5, 0.1);
  EXPECT_THAT(outcome.out, HasSubstr("\nstate = 8, dc_differ_ns = "));
}

TEST(Examples, PythonRunsTheMainJobThroughTheSameLibrary) {
  if (std::string(PYTHON).empty())
    GTEST_SKIP() << "no python3, or sanitizers in the library";
  const auto outcome = runProgram({PYTHON, EXAMPLE_PYTHON, "--library", IGH_MASTER_LIBRARY, "--cycles", "500",
                                   machine("servo_drive.xml")},
                                  0, machine("machine.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("8 slaves, 491 callbacks, 0 errors\nPosition actual value: 497\n"
                                     "Mode of operation: 8\nAL state: 8\n"));
}

} // namespace
