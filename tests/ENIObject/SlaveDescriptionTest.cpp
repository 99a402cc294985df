#include "ENIObject/DescriptionSupport.h"

#include <gtest/gtest.h>

using namespace description_test;

TEST(SlaveDescription, IsEditedBetweenBeginAndEndAndALaterEntryTakesTheName) {
  messages().clear();
  CSlaveENIObject slave(2, 0x30, 1, "class", capture);
  CSlaveENIObject::_PDOINFO pdo;
  CSlaveENIObject::_SYNCINFO sync;
  EXPECT_FALSE(slave.createSyncInfoIfNotExist(2, true) || slave.createPDOInfoIfNotExist(&sync, 0x1600) ||
               slave.addPDOEntry(&pdo, "A", "INT", {1, 2, 16}));
  slave.endEditSyncInfo();
  EXPECT_EQ(slave.getSlaveSyncInfo(), nullptr);

  const auto add = [&slave](unsigned int manager, bool output, unsigned int index, const char* name) {
    ASSERT_TRUE(slave.createSyncInfoIfNotExist(manager, output));
    ASSERT_TRUE(slave.createPDOInfoIfNotExist(slave.getSyncInfo(manager), index));
    ASSERT_TRUE(slave.addPDOEntry(slave.getPDOInfo(slave.getSyncInfo(manager), index), name, "", {1, 2, 3}));
  };
  for (int edit = 0; edit < 2; ++edit) {
    ASSERT_TRUE(slave.beginEditSyncInfo());
    add(3, false, 0x1A01, "A");
    add(3, false, 0x1A00, "B");
    add(2, true, 0x1600, "A");
    EXPECT_FALSE(slave.beginEditSyncInfo() || slave.createSyncInfoIfNotExist(2, false));
    EXPECT_TRUE(slave.createSyncInfoIfNotExist(5, false));
    slave.endEditSyncInfo();
    EXPECT_EQ(entriesOf(&slave), "2/1600 1:2 3  A\n3/1A00 1:2 3  B\n3/1A01 1:2 3  A\n");
  }
  const Message direction{0, "Sync output flag not don't matched"};
  const auto conflict = [](const std::string& name) {
    return Message{0, "PDO Entry Name(" + name + ") conflict，system will overwrite it!\n"};
  };
  EXPECT_EQ(messages(),
            (Messages{direction, conflict("A"), direction, conflict("A"), conflict("B"), conflict("A")}))
      << "the names of the first edit are known";
  EXPECT_EQ(slave.getSyncInfo(3), nullptr);
  EXPECT_EQ(slave.getSlaveSyncInfo()[0].watchdog_mode, EC_WD_ENABLE);
  EXPECT_TRUE(slave.getSlaveSyncInfo()[2].pdos != nullptr && slave.getSlaveSyncInfo()[3].index == 0xff);
  EXPECT_EQ(slave.getSlavePDOEntryReg()[3].index, 0) << "the end of the registration list";
  unsigned long position = 9;
  EXPECT_TRUE(slave.getSlavePDOEntryReg("a", position) == nullptr && position == 9);
  EXPECT_EQ(slave.getSlavePDOEntryReg("A", position), slave.getSlavePDOEntryReg() + 2);
  EXPECT_EQ(position, 2U);
}
