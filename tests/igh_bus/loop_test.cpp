// What the program counts while it cycles, without a bus.
#include "igh_bus/ErrorCounts.h"
#include "igh_bus/RealTime.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

TEST(ErrorCounts, AnErrorLastsWhenTheLastCyclesAllRaisedIt) {
  igh_bus::ErrorCounts errors;
  const auto cycle = [&](int times) {
    for (int i = 0; i < times; ++i)
      errors.count(3); // one for each slave in error
    ++errors.cycle;
  };
  for (const int times : {1, 1, 1, 0, 2, 2})
    cycle(times);
  EXPECT_EQ(errors.total[3], 7U);
  EXPECT_FALSE(errors.lasting(3, 3)); // interrupted in the fourth cycle
  EXPECT_TRUE(errors.lasting(3, 2));
  cycle(1);
  EXPECT_TRUE(errors.lasting(3, 3));
  cycle(0);
  EXPECT_FALSE(errors.lasting(3, 1));
  EXPECT_FALSE(errors.lasting(1, 1));
  errors.count(-1);
  errors.count(6);
}

TEST(Pacemaker, LeavesMissedPeriodsOutAndStaysOnItsGrid) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  igh_bus::Pacemaker pacemaker(2000000);
  std::this_thread::sleep_for(std::chrono::milliseconds(9));
  EXPECT_TRUE(pacemaker.wait()); // due after 2 ms: late by three periods at least
  EXPECT_GE(pacemaker.leftOut(), 3U);
  EXPECT_GE(pacemaker.latestNs(), 7000000);
  const auto before = pacemaker.leftOut();
  EXPECT_TRUE(pacemaker.wait());
  const auto periods = static_cast<std::int64_t>(before) + 2; // the times that were waited for or left out
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(2) * periods);
  pacemaker.shift(5000000);
  EXPECT_TRUE(pacemaker.wait());
  EXPECT_GE(Clock::now() - start,
            std::chrono::milliseconds(2) * (periods + 1) + std::chrono::milliseconds(5));
}

} // namespace
