// The example programs, run as a user runs them.
#include "Program.h"

namespace {

TEST(Examples, DoWhatTheyAreThereFor) {
  const std::string rest = "at -?[01], at most [1-9][0-9]+ counts behind, off"; // where it began
  const std::string off = "at [1-9][0-9]+, [^\n]* off[^\n]*\n";
  const std::tuple<std::string, std::string, int, std::string> cases[] = {
      // Sent in cycle 1997, mirrored by the drive into the next frame, received in cycle 1999.
      {"'" EXAMPLE_MINIMAL "' @servo_drive.xml", "machine.json", 0,
       "Position actual value: 1997\nAL state: 8\n"},
      // The rate of the reference clock is learned.
      {"'" EXAMPLE_FOLLOW_CLOCK "' @servo_drive.xml -n 12000", "machine.json", 0,
       "\nstate = 8, dc_differ_ns = .*\ncycle 12000: offset -?[0-9]+ ns, moving by -(4\\.9|5\\.0)"},
      {"'" EXAMPLE_MOTION "' @motion_drive.xml 2500", "motion.json", 0,
       "Axis 0: " + rest + "[^\n]*\nAxis 1: " + rest},
      // One axis loses its power, both stop.
      {"'" EXAMPLE_MOTION "' @motion_drive.xml 5000", "motion_faults.json", 3,
       "Axis 0: " + off + "Axis 1: " + off + ".*motion: stopped for a fault: 4 frames in a row"}};
  for (const auto& [line, bus, status, pattern] : cases) {
    const auto outcome = runProgram(line, 0, bus);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_THAT(outcome.out + outcome.err, testing::ContainsRegex(pattern));
  }
}

} // namespace
