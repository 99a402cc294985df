#include "EthercatDataHelper/EthercatDataHelper.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>
#include <vector>

using Buffer = std::array<unsigned char, 40>;

TEST(Conversion, RoundsHalvesAwayFromZeroAndWrapsToTheWidth) {
  constexpr double INFINITE = std::numeric_limits<double>::infinity();
  constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
  constexpr double BELOW_HALF = 0.49999999999999994;
  const std::map<ETHERCAT_DATA_TYPE, std::vector<std::pair<double, std::uint64_t>>> bytesOf{
      {DATA_TYPE_SINT, {{2.5, 3}, {-2.5, 0xFD}, {BELOW_HALF, 0}, {-BELOW_HALF, 0}, {3e9, 0}}},
      {DATA_TYPE_USINT, {{300, 44}, {-1, 0xFF}}},
      {DATA_TYPE_INT, {{40000, 0x9C40}, {NOT_A_NUMBER, 0}}},
      {DATA_TYPE_UINT, {{70000, 4464}, {-1, 0xFFFF}}},
      {DATA_TYPE_DINT, {{2147483647.4, 0x7FFFFFFF}, {2147483647.5, 0x80000000}, {-2147483648.5, 0x80000000}}},
      {DATA_TYPE_UDINT, {{0x1p52 + 1, 1}, {-1, 0xFFFFFFFF}, {0x1p63, 0}, {-INFINITE, 0}, {NOT_A_NUMBER, 0}}},
      {DATA_TYPE_REAL, {{0.1, 0x3DCCCCCD}, {1e300, 0x7F800000}}},
      {DATA_TYPE_LREAL, {{-2.0, 0xC000000000000000}}}};
  for (const auto& [type, values] : bytesOf) {
    for (const auto& [value, bytes] : values) {
      for (bool bigEndian : {false, true}) {
        const unsigned long size = CEthercatDataHelper::getTypeSize(type);
        Buffer expected{};
        for (unsigned long byte = 0; byte < size; ++byte) {
          expected.at(3 * size + (bigEndian ? size - 1 - byte : byte)) =
              static_cast<unsigned char>(bytes >> (8 * byte));
        }
        Buffer written{};
        ASSERT_TRUE(CEthercatDataHelper::doubleToBuffer(value, type, bigEndian, written.data(), 3));
        EXPECT_EQ(written, expected) << "type " << type << " value " << value;
        Buffer again{};
        double read = 0;
        ASSERT_TRUE(CEthercatDataHelper::doubleFromBuffer(type, written.data(), bigEndian, &read, 3));
        CEthercatDataHelper::doubleToBuffer(read, type, bigEndian, again.data(), 3);
        EXPECT_EQ(again, expected) << "type " << type << " read as " << read;
      }
    }
  }
}

TEST(Conversion, TypesWithoutConversionHaveASizeButMoveNothing) {
  for (const auto& [number, bytes] : std::map<int, unsigned long>{{-1, 0}, {0, 1}, {7, 8}, {8, 8}, {11, 0}}) {
    const auto type = static_cast<ETHERCAT_DATA_TYPE>(number);
    EXPECT_EQ(CEthercatDataHelper::getTypeSize(type), bytes) << number;
    Buffer buffer{1, 2, 3};
    double value = 0.5;
    EXPECT_FALSE(CEthercatDataHelper::doubleToBuffer(9, type, false, buffer.data(), 0) || buffer[0] != 1);
    EXPECT_FALSE(CEthercatDataHelper::doubleFromBuffer(type, buffer.data(), false, &value, 0) ||
                 value != 0.5);
  }
}
