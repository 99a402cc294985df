// The example programs, run as a user runs them.
#include "Program.h"

#include <algorithm>
#include <cstdlib>

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

TEST(Examples, FollowClockBringsTheMasterToTheReference) {
  const auto outcome = runProgram({EXAMPLE_FOLLOW_CLOCK, machine("servo_drive.xml"), "-n", "9000"}, 0,
                                  machine("machine.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  std::vector<int> differences;
  for (std::size_t at = 0; (at = outcome.out.find("\nstate = 8, dc_differ_ns = ", at)) != std::string::npos;
       ++at)
    differences.push_back(std::abs(std::atoi(&outcome.out[at + 27])));
  ASSERT_EQ(differences.size(), 8U) << outcome.out;
  // Some 5 us apart at first. A late wake-up spoils single differences, hence the best of the last ones.
  EXPECT_LT(*std::min_element(differences.begin() + 4, differences.end()), 2000) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("cycle 8000: offset -"));
}

TEST(Examples, PythonRunsTheMainJobThroughTheSameLibrary) {
  if (std::string(PYTHON).empty())
    GTEST_SKIP() << "no python3, or sanitizers in the library";
  const auto outcome = runProgram({PYTHON, EXAMPLE_PYTHON, "--library", IGH_MASTER_LIBRARY, "--cycles", "500",
                                   machine("servo_drive.xml")},
                                  0, machine("machine.json"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("8 slaves, 425 callbacks, 0 errors\nPosition actual value: 497\n"
                                     "Mode of operation: 8\nAL state: 8\n"));
}

} // namespace
