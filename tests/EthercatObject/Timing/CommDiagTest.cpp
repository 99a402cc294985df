#include "EthercatObject/Timing/CommDiag.h"

#include <gtest/gtest.h>

namespace {

class CommDiag : public testing::Test {
protected:
  static timespec at(long long nanoseconds) {
    return {nanoseconds / 1000000000, static_cast<long>(nanoseconds % 1000000000)};
  }
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

  CCommDiag diag;
  unsigned long long cycle = 0;
};

TEST_F(CommDiag, FirstCycleSetsAllAndLaterOnlyOneExtremeChangesPerCycle) {
  add(0, 500000);
  EXPECT_EQ(get(COMM_DIAG_MIN).totalExchangeCostUs, 500);
  EXPECT_EQ(get(COMM_DIAG_MAX).totalExchangeCostUs, 500);
  for (const long long end : {500999, 400000, 700000, 400000, 700000}) { // equal in whole us: no new extreme
    add(0, end);
  }
  EXPECT_EQ(get(COMM_DIAG_MIN).time, 2U);
  EXPECT_EQ(get(COMM_DIAG_MAX).time, 3U);
  EXPECT_EQ(get(COMM_DIAG_LAST).time, 5U);
  add(700000, 0); // a clock that ran backwards is a huge cost, as totals compare unsigned
  EXPECT_EQ(get(COMM_DIAG_MIN).time, 2U);
  EXPECT_EQ(get(COMM_DIAG_MAX).time, 6U);
}

TEST_F(CommDiag, CostsTruncateTowardsZeroAndWrapAtThirtyTwoBits) {
  add(1999999000, 2000000999); // across a second: 1 s - 999998001 ns, the second part in whole us
  EXPECT_EQ(get(COMM_DIAG_LAST).totalExchangeCostUs, 1000000 - 999998);
  add(0, 4295LL * 1000000000); // 4295000000 us
  EXPECT_EQ(get(COMM_DIAG_LAST).totalExchangeCostUs, 4295000000LL - 4294967296LL);
}

TEST_F(CommDiag, RecordsPrintByteForByte) {
  const _ETHERCAT_COMM_DIAG_INFO shown{1234567890123, 10, -1, 12, 13, 14};
  const std::string body =
      "    Time = 1234567890123\n    TxPDO received cost(us) = 10\n    SDO cost(us) = -1\n"
      "    RxPDO sent cost(us) = 12\n    User callback cost(us) = 13\n"
      "    Total exchange cost(us) = 14\n";
  testing::internal::CaptureStdout();
  CCommDiag::print("Slowest", &shown);
  CCommDiag::print(nullptr, &shown);
  CCommDiag::print("Nothing", nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nSlowest:\n" + body + "\nCommunication detail:\n" + body);
  _ETHERCAT_COMM_DIAG_INFO none = shown;
  EXPECT_FALSE(diag.get(3, &none) || diag.get(COMM_DIAG_MIN, nullptr)); // no such record: nothing is written
  EXPECT_EQ(none.time, shown.time);
}

} // namespace
