#include "EthercatObject/CommDiag.h"

#include <gtest/gtest.h>

namespace {

timespec at(long long nanoseconds) {
  return {nanoseconds / 1000000000, static_cast<long>(nanoseconds % 1000000000)};
}

struct Records {
  CCommDiag diag;
  unsigned long long cycle = 0;

  void add(long long startNs, long long endNs) {
    _CYCLE_STAMPS stamps;
    stamps.total = {at(startNs), at(endNs)};
    diag.record(cycle++, stamps);
  }
  _ETHERCAT_COMM_DIAG_INFO get(unsigned int index) const {
    _ETHERCAT_COMM_DIAG_INFO info{};
    EXPECT_TRUE(diag.get(index, &info));
    return info;
  }
};

TEST(CommDiag, FirstCycleSetsAllAndLaterOnlyOneExtremeChangesPerCycle) {
  Records records;
  records.add(0, 500000);
  EXPECT_EQ(records.get(COMM_DIAG_MIN).totalExchangeCostUs, 500);
  EXPECT_EQ(records.get(COMM_DIAG_MAX).totalExchangeCostUs, 500);
  records.add(0, 500999); // equal in whole microseconds: replaces neither
  records.add(0, 400000);
  records.add(0, 700000);
  records.add(0, 400000);
  records.add(0, 700000);
  EXPECT_EQ(records.get(COMM_DIAG_MIN).time, 2U);
  EXPECT_EQ(records.get(COMM_DIAG_MAX).time, 3U);
  EXPECT_EQ(records.get(COMM_DIAG_LAST).time, 5U);
  records.add(700000, 0); // a clock that ran backwards is a huge cost, as totals compare unsigned
  EXPECT_EQ(records.get(COMM_DIAG_MIN).time, 2U);
  EXPECT_EQ(records.get(COMM_DIAG_MAX).time, 6U);
  records.diag.reset();
  EXPECT_EQ(records.get(COMM_DIAG_MAX).totalExchangeCostUs, 0);
}

TEST(CommDiag, CostsTruncateTowardsZeroAndWrapAtThirtyTwoBits) {
  Records records;
  records.add(1999999000, 2000000999); // across a second: 1 s - 999998001 ns, the second part in whole us
  EXPECT_EQ(records.get(COMM_DIAG_LAST).totalExchangeCostUs, 1000000 - 999998);
  records.add(0, 4295LL * 1000000000); // 4295000000 us
  EXPECT_EQ(records.get(COMM_DIAG_LAST).totalExchangeCostUs, 4295000000LL - 4294967296LL);

  const timespec start{5, 900};
  const timespec end{7, 100};
  timespec span{};
  getClockSpan(&start, &end, &span);
  EXPECT_EQ(span.tv_sec, 2);
  EXPECT_EQ(span.tv_nsec, -800);
}

} // namespace
