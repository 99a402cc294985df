#include "EthercatObject/EthercatObject.h"

#include <gtest/gtest.h>

namespace {

// The keys are given in their order.
template <class KEY> void expectOrdered(const std::vector<KEY>& keys) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    for (std::size_t j = 0; j < keys.size(); ++j) {
      const KEY& a = keys[i];
      const KEY& b = keys[j];
      EXPECT_EQ(KEY::compare(a, b), (i > j ? 1 : 0) - (i < j ? 1 : 0)) << i << " " << j;
      EXPECT_TRUE((a == b) == (i == j) && (a != b) == (i != j) && (a < b) == (i < j) && (a > b) == (i > j) &&
                  (a <= b) == (i <= j) && (a >= b) == (i >= j));
    }
  }
}

TEST(KeyOrder, IsTheSameForAllSixOperators) {
  expectOrdered<CEthercatMaster::_PDO_ENTRY_INFO_KEY>({{}, {0, "In"}, {0, "In 2"}, {0, "\xC4"}, {1, "A"}});
  expectOrdered<CEthercatMaster::_SDO_INFO_KEY>(
      {{0, 0, 0, true}, {}, {0, 0, 9, false}, {0, 1, 1, true}, {0, 1, 1, false}, {0, 1, 2, true}, {1}});
}

} // namespace
