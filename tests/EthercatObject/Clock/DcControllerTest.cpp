#include "EthercatObject/Clock/DcController.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

constexpr unsigned int PERIOD = 1000000;

class DcController : public testing::Test {
protected:
  // One step; by how many ns it moves the offset.
  long long step(int rawDifference) {
    const long long before = controller.systemBaseOffsetNs();
    controller.measure(rawDifference);
    controller.update(PERIOD, 5000, 8, debug);
    return controller.systemBaseOffsetNs() - before;
  }
  // A whole interval: all differences `first` but the last.
  void interval(int first, int last) {
    for (int i = 0; i < 1023; ++i) {
      step(first);
    }
    step(last);
  }
  // Starts with this difference; the next interval's drift begins at it.
  void start(int difference) {
    controller.reset(77);
    step(difference);
  }

  CDcController controller;
  bool debug = false;
};

TEST_F(DcController, DifferencesWrapIntoOnePeriodButKeepTheSignOfTheDividend) {
  // Beyond INT_MAX the sum goes round, as the 32-bit times themselves do.
  const int cases[][2] = {{500000, -500000},   {499999, 499999}, {-500001, -500001},  {-1499999, -1499999},
                          {-1500000, -500000}, {0, 0},           {INT_MIN, -1483648}, {INT_MAX, -1483649}};
  for (const auto& [raw, wrapped] : cases) {
    EXPECT_EQ(CDcController::wrap(PERIOD, raw), wrapped) << raw;
  }
  EXPECT_EQ(CDcController::wrap(100001, 50000), 50000);
}

TEST_F(DcController, StartsWithTheFirstDifferenceAndMovesFromTheNextOneOn) {
  controller.reset(77);
  EXPECT_EQ(step(0), 0);
  EXPECT_EQ(step(3 * static_cast<int>(PERIOD)), 0); // whole periods are no difference
  EXPECT_FALSE(controller.started());
  EXPECT_EQ(controller.startTimeNs(), 77U);
  debug = true;
  testing::internal::CaptureStdout();
  EXPECT_EQ(step(900000), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "First master diff: -100000.\n");
  EXPECT_EQ(controller.startTimeNs(), 5000U);
  EXPECT_EQ(step(20), 1);
  EXPECT_EQ(step(-20), -1);
  EXPECT_EQ(step(0), 0);
}

// The raw differences go from 1 to `last` in one interval: their drift sum is the way between.
TEST_F(DcController, TheDriftSumIsRoundedByAHalfAndCutTowardsZero) {
  const int cases[][2] = {{1536, 2}, {1535, 1}, {512, 1},   {511, 0},
                          {-512, 0}, {-513, 0}, {-1535, 0}, {-1536, -1}};
  const int turn = static_cast<int>(PERIOD);
  for (const auto& [drift, adjust] : cases) {
    start(1);
    const int sum = 1 + drift; // of the differences: all but the last are 0
    interval(0, sum);
    const int expected = adjust + (sum > 1023 ? 1 : 0) - (sum < -1023 ? 1 : 0);
    EXPECT_EQ(controller.adjustNs(), expected) << drift;
  }
  start(1);
  interval(0, 2 * turn); // two periods of drift are no difference, but 1953 ns a cycle, which is too much
  EXPECT_EQ(controller.adjustNs(), 1000);
  interval(0, 0); // the way back
  EXPECT_EQ(controller.adjustNs(), 1000 - 1952);
  interval(0, -2 * turn);
  EXPECT_EQ(controller.adjustNs(), -1000);
}

TEST_F(DcController, TheDifferenceSumAddsAStepBeyond1023) {
  const int cases[][3] = {{1, 0, 0}, {1, 1, 1}, {-1, 0, 0}, {-1, -1, -1}}; // sums 1023, 1024 and negative
  for (const auto& [each, last, adjust] : cases) {
    start(each);
    interval(each, last);
    EXPECT_EQ(controller.adjustNs(), adjust) << each << " " << last;
  }
}

TEST_F(DcController, AnIntervalEndsWithALineAndNewExtremes) {
  start(50);
  interval(50, -3);
  debug = true;
  for (int i = 0; i < 1023; ++i) {
    step(i == 500 ? -40 : 7);
  }
  testing::internal::CaptureStdout();
  EXPECT_EQ(step(9), 3); // sign and adjust: one step for each sum
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "state = 8, dc_differ_ns = 9, dc_adjust_ns = 2, min_dc_differ_ns = -40, max_dc_differ_ns = 7!\n");
}

// Numbers only: a reference clock that starts `ahead` ns ahead of the real time and gains `drift` ns in each
// cycle. While `lost`, its reading fails and counts as 0.
struct Course {
  std::int64_t ahead;
  std::int64_t drift;
  std::int32_t target;
  CDcController controller = {};
  std::int64_t cycle = 0;
  std::int32_t raw = 0;
  std::int64_t outside = 0; // the last cycle in which the raw difference was more than 10 us off the target

  void run(std::int64_t cycles, bool lost = false) {
    constexpr std::int64_t SETTLING = 100;
    for (; cycles > 0; --cycles) {
      const std::int64_t now = ++cycle * PERIOD + 1234567890;
      const std::int64_t reference = lost ? 0 : now + ahead + drift * cycle;
      raw = static_cast<std::int32_t>(now - controller.systemBaseOffsetNs() - reference);
      outside = std::abs(raw - target) > 10000 ? cycle : outside;
      controller.measure(raw);
      if (cycle > SETTLING) {
        controller.update(PERIOD, 0, 8, false);
      }
    }
  }
};

// Only a positive raw difference ends at the nearest whole period. A negative one is walked off to 0, one
// nanosecond per cycle, and crosses every phase of the period ten times on that way.
TEST(ClockCourse, APositiveRawDifferenceEndsAtAWholePeriodAndANegativeOneOnlyAtZero) {
  constexpr int TEN_PERIODS = 10 * static_cast<int>(PERIOD);
  for (const bool ahead : {true, false}) {
    Course course{ahead ? TEN_PERIODS : -TEN_PERIODS, 50, ahead ? 0 : TEN_PERIODS};
    course.run(1000000);
    EXPECT_EQ(course.raw, ahead ? -9057376 : TEN_PERIODS);
    course.run(9060000);
    EXPECT_EQ(course.outside, ahead ? 10047375 : 47375);
    EXPECT_EQ(course.raw, course.target);
    EXPECT_EQ(course.controller.adjustNs(), -50);
  }
}

TEST(ClockCourse, TenSecondsOfFailedReadingsMoveTheOffsetByMillisecondsAndTakeHoursToWalkOff) {
  for (const int drift : {50, -50}) {
    Course course{0, drift, 0};
    course.run(120000);
    ASSERT_LT(course.outside, 60000);
    const std::int64_t before = course.controller.systemBaseOffsetNs();
    course.run(10000, true);
    const std::int64_t moved = course.controller.systemBaseOffsetNs() - before;
    EXPECT_TRUE(moved >= 7000000 && moved <= 10000000) << moved;
    EXPECT_EQ(course.controller.adjustNs(), 1000); // the rate's limit: what a cycle loses is a whole period
    course.run(7000000);
    EXPECT_LT(course.raw, -1000000);
    EXPECT_EQ(course.controller.adjustNs(), -drift); // the rate itself is found again at once
  }
}

} // namespace
