#include "EthercatDataHelper/EthercatDataHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Case {
  ETHERCAT_DATA_TYPE type;
  double value;
  std::uint64_t bytes;
  double readBack;
};

} // namespace

TEST(Conversion, RoundsHalvesAwayFromZeroAndWrapsToTheWidth) {
  for (Case const& expected : {Case{DATA_TYPE_SINT, 2.5, 3, 3},
                               Case{DATA_TYPE_SINT, -2.5, 0xFD, -3},
                               Case{DATA_TYPE_SINT, 0.49999999999999994, 0, 0},
                               Case{DATA_TYPE_SINT, -0.49999999999999994, 0, 0},
                               Case{DATA_TYPE_UDINT, 0x1p52 + 1, 1, 1},
                               Case{DATA_TYPE_USINT, 300, 44, 44},
                               Case{DATA_TYPE_USINT, -1, 0xFF, 255},
                               Case{DATA_TYPE_SINT, 3e9, 0, 0},
                               Case{DATA_TYPE_UINT, 70000, 4464, 4464},
                               Case{DATA_TYPE_INT, 40000, 0x9C40, -25536},
                               Case{DATA_TYPE_UINT, -1, 0xFFFF, 65535},
                               Case{DATA_TYPE_INT, notANumber, 0, 0},
                               Case{DATA_TYPE_DINT, 2147483647.4, 0x7FFFFFFF, 2147483647},
                               Case{DATA_TYPE_DINT, 2147483647.5, 0x80000000, -2147483648.0},
                               Case{DATA_TYPE_DINT, -2147483648.5, 0x80000000, -2147483648.0},
                               Case{DATA_TYPE_DINT, infinite, 0x80000000, -2147483648.0},
                               Case{DATA_TYPE_DINT, -2147483647, 0x80000001, -2147483647},
                               Case{DATA_TYPE_UDINT, 4294967295.0, 0xFFFFFFFF, 4294967295.0},
                               Case{DATA_TYPE_UDINT, -1, 0xFFFFFFFF, 4294967295.0},
                               Case{DATA_TYPE_UDINT, 4294967297.0, 1, 1},
                               Case{DATA_TYPE_UDINT, 0x1p63, 0, 0},
                               Case{DATA_TYPE_UDINT, -infinite, 0, 0},
                               Case{DATA_TYPE_UDINT, notANumber, 0, 0},
                               Case{DATA_TYPE_REAL, 0.1, 0x3DCCCCCD, static_cast<double>(0.1F)},
                               Case{DATA_TYPE_REAL, 1e300, 0x7F800000, infinite},
                               Case{DATA_TYPE_LREAL, -2.0, 0xC000000000000000, -2.0}}) {
    SCOPED_TRACE(testing::Message() << "type " << expected.type << " value " << expected.value);
    unsigned long const size = CEthercatDataHelper::getTypeSize(expected.type);
    for (bool bigEndian : {false, true}) {
      unsigned char buffer[5 * 8];
      std::fill_n(buffer, sizeof(buffer), std::uint8_t{0x55});
      ASSERT_TRUE(CEthercatDataHelper::doubleToBuffer(expected.value, expected.type, bigEndian, buffer, 3));
      for (unsigned long byte = 0; byte < sizeof(buffer); ++byte) {
        unsigned long const digit = bigEndian ? 4 * size - 1 - byte : byte - 3 * size;
        EXPECT_EQ(buffer[byte], byte / size == 3 ? (expected.bytes >> (8 * digit)) & 0xFF : 0x55) << byte;
      }
      double value = 0;
      ASSERT_TRUE(CEthercatDataHelper::doubleFromBuffer(expected.type, buffer, bigEndian, &value, 3));
      EXPECT_EQ(value, expected.readBack);
    }
  }
}

TEST(Conversion, TypesWithoutConversionHaveASizeButMoveNothing) {
  std::pair<int, unsigned long> const sizes[] = {{-1, 0}, {0, 1}, {7, 8}, {8, 8}, {11, 0}};
  for (auto const& [number, bytes] : sizes) {
    auto const type = static_cast<ETHERCAT_DATA_TYPE>(number);
    EXPECT_EQ(CEthercatDataHelper::getTypeSize(type), bytes) << number;
    unsigned char buffer[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    double value = 0.5;
    EXPECT_FALSE(CEthercatDataHelper::doubleToBuffer(9, type, false, buffer, 0));
    EXPECT_FALSE(CEthercatDataHelper::doubleFromBuffer(type, buffer, false, &value, 0));
    EXPECT_EQ(buffer[0], 1);
    EXPECT_EQ(value, 0.5);
  }
}
