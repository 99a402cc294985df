#include "EthercatObject/ProcessImage/EntryBits.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

// Of a gap none; of an object those of its first place; of a PDO that two sync managers have, the entries of
// the last; of an object that is in none of these, the start.
TEST(EntryBits, AreThoseOfTheLayoutAsThePlatformTakesIt) {
  ec_pdo_entry_info_t three[] = {{0x7000, 1, 8}, {0, 0, 4}, {0x7000, 2, 32}};
  ec_pdo_entry_info_t two[] = {{0x7000, 1, 16}, {0x7000, 3, 1}};
  ec_pdo_info_t first[] = {{0x1600, 3, three}, {0x1601, 2, two}};
  ec_pdo_info_t again[] = {{0x1600, 2, two}, {0x1600, 0, nullptr}};
  const ec_sync_info_t end{0xff, EC_DIR_INVALID, 0, nullptr, EC_WD_DEFAULT};
  ec_sync_info_t layout[] = {{2, EC_DIR_OUTPUT, 2, first, EC_WD_DEFAULT}, end, end};
  std::vector<unsigned char> bits{99};
  appendEntryBits(layout, bits);
  EXPECT_THAT(bits, ElementsAre(99, 8, 0, 32, 8, 1));
  layout[1] = {4, EC_DIR_OUTPUT, 2, again, EC_WD_DEFAULT};
  layout[0].n_pdos = 1;
  bits.clear();
  appendEntryBits(layout, bits);
  EXPECT_THAT(bits, ElementsAre(16, 0, 1, 16, 1));
}
