#include "DescriptionSupport.h"

#include <gtest/gtest.h>

using description_test::capture;
using description_test::Message;
using description_test::messages;

namespace {

char const* const conflict = "PDO Entry Name(A) conflict，system will overwrite it!\n";

void addEntry(CSlaveENIObject& slave, unsigned int sync, bool output, unsigned int pdo, char const* name,
              unsigned short index) {
  ASSERT_TRUE(slave.createSyncInfoIfNotExist(sync, output));
  ASSERT_TRUE(slave.createPDOInfoIfNotExist(slave.getSyncInfo(sync), pdo));
  ASSERT_TRUE(slave.addPDOEntry(slave.getPDOInfo(slave.getSyncInfo(sync), pdo), name, "INT", {index, 2, 16}));
}

std::string listing(CSlaveENIObject const& slave, int tables) {
  testing::internal::CaptureStdout();
  slave.syncInfoPrintf(tables);
  return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(SlaveDescription, LayoutIsSortedAndListedAndALaterEntryTakesTheName) {
  messages().clear();
  CSlaveENIObject slave(2, 0x30, 1, "class", capture);
  ASSERT_TRUE(slave.beginEditSyncInfo());
  addEntry(slave, 3, false, 0x1A01, "A", 0x10);
  addEntry(slave, 3, false, 0x1A00, "B", 0x6000);
  addEntry(slave, 2, true, 0x1600, "A", 0x7000);
  ASSERT_TRUE(slave.createSyncInfoIfNotExist(5, false));
  slave.endEditSyncInfo();
  EXPECT_EQ(messages(), (std::vector<Message>{{0, conflict}}));
  EXPECT_EQ(slave.getSyncInfo(3), nullptr);
  EXPECT_EQ(slave.getSlaveSyncInfo()[0].watchdog_mode, EC_WD_ENABLE);
  EXPECT_NE(slave.getSlaveSyncInfo()[2].pdos, nullptr) << "a sync manager without PDOs";
  EXPECT_EQ(slave.getSlaveSyncInfo()[3].index, 0xff);
  EXPECT_EQ(slave.getSlavePDOEntryReg()[3].index, 0) << "the end of the registration list";

  unsigned long position = 9;
  EXPECT_EQ(slave.getSlavePDOEntryReg("a", position), nullptr);
  EXPECT_EQ(position, 9U);
  EXPECT_EQ(slave.getSlavePDOEntryReg("A", position), slave.getSlavePDOEntryReg() + 2);
  EXPECT_EQ(position, 2U);

  EXPECT_EQ(listing(slave, 0x10), "");
  EXPECT_EQ(
      listing(slave, 15),
      "const static ec_pdo_entry_reg_t domain1_regs[] = {\n"
      "    {0, 0, 0x00000002, 0x00000030, 0x7000, 2, NULL, NULL}\t/* A */, \n"
      "    {0, 0, 0x00000002, 0x00000030, 0x6000, 2, NULL, NULL}\t/* B */, \n"
      "    {0, 0, 0x00000002, 0x00000030, 0x0010, 2, NULL, NULL}\t/* A */\n"
      "    {}\n};\n\n"
      "static ec_pdo_entry_info_t m_pPDOEntryArray[] = {\n"
      "    {0x7000, 2, 16}\t/* A */, \n    {0x6000, 2, 16}\t/* B */, \n    {0x10, 2, 16}\t/* A */\n};\n\n"
      "static ec_pdo_info_t m_pPDOInfoArray[] = {\n"
      "    {0x1600, 1, &m_pPDOEntryArray[0]}, \n    {0x1A00, 1, &m_pPDOEntryArray[1]}, \n"
      "    {0x1A01, 1, &m_pPDOEntryArray[2]}\n};\n\n"
      "static ec_sync_info_t m_pSyncInfoArray[] = {\n"
      "    {2, EC_DIR_OUTPUT, 1, &m_pPDOInfoArray[0]}, \n    {3, EC_DIR_INPUT, 2, &m_pPDOInfoArray[1]}, \n"
      "    {5, EC_DIR_INPUT, 0, &m_pPDOInfoArray[3]}, \n    {0xff}\n};\n\n");
}

TEST(SlaveDescription, EditingHasABeginAndAnEnd) {
  messages().clear();
  CSlaveENIObject slave(2, 0x30, 1, "class", capture);
  CSlaveENIObject::_PDOINFO pdo;
  CSlaveENIObject::_SYNCINFO sync;
  EXPECT_FALSE(slave.createSyncInfoIfNotExist(2, true));
  EXPECT_FALSE(slave.createPDOInfoIfNotExist(&sync, 0x1600));
  EXPECT_FALSE(slave.addPDOEntry(&pdo, "A", "INT", {1, 2, 16}));
  slave.endEditSyncInfo();
  EXPECT_EQ(slave.getSlaveSyncInfo(), nullptr);

  for (int edit = 0; edit < 2; ++edit) {
    ASSERT_TRUE(slave.beginEditSyncInfo());
    addEntry(slave, 2, true, 0x1600, "A", 1);
    EXPECT_FALSE(slave.beginEditSyncInfo());
    EXPECT_TRUE(slave.createSyncInfoIfNotExist(2, true));
    EXPECT_FALSE(slave.createSyncInfoIfNotExist(2, false));
    slave.endEditSyncInfo();
    EXPECT_EQ(slave.getSlavePDOEntryCount(), 1U);
  }
  Message const direction{0, "Sync output flag not don't matched"};
  EXPECT_EQ(messages(), (std::vector<Message>{direction, direction, {0, conflict}})) << "old names are known";

  ASSERT_TRUE(slave.beginEditSyncInfo());
  slave.endEditSyncInfo();
  EXPECT_EQ(listing(slave, 9), "const static ec_pdo_entry_reg_t domain1_regs[] = {\n    {}\n};\n\n"
                               "static ec_sync_info_t m_pSyncInfoArray[] = {\n    {0xff}\n};\n\n");
}

TEST(SlaveDescription, TheFirstOpModeOfANameStays) {
  CSlaveENIObject slave(2, 0x30, 1, "class", nullptr);
  EXPECT_TRUE(slave.addDcOpMode("DC", {0x300, 1, -2, 3, -4}));
  EXPECT_FALSE(slave.addDcOpMode("DC", {0x700, 0, 0, 0, 0}));
  EXPECT_FALSE(slave.addDcOpMode(nullptr, {0x700, 0, 0, 0, 0}));
  unsigned short assign = 7;
  unsigned int cycle[2] = {};
  int shift[2] = {};
  EXPECT_FALSE(slave.getDCConfiguration("dc", assign, cycle[0], shift[0], cycle[1], shift[1]));
  EXPECT_EQ(assign, 7);
  EXPECT_TRUE(slave.getDCConfiguration("DC", assign, cycle[0], shift[0], cycle[1], shift[1]));
  EXPECT_EQ(assign, 0x300);
  EXPECT_TRUE(cycle[0] == 1 && shift[0] == -2 && cycle[1] == 3 && shift[1] == -4);
}
