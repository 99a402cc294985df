#include "bus/ErrorCounts.h"

#include <gtest/gtest.h>

namespace {

TEST(ErrorCounts, AnErrorLastsWhenTheLastCyclesAllRaisedIt) {
  igh_bus::ErrorCounts errors;
  const auto cycle = [&](int times) {
    for (int i = 0; i < times; ++i)
      errors.count(0, 3); // one for each slave in error
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
}

} // namespace
