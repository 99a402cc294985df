#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, ScanMatchesSlavesAndPrintsTheListingByteForByte) {
  const Device terminal{
      0x10, {{"Mode", "USINT"}, {"gap", "USINT"}, {"Set point", "UINT"}}, {{"Level", "INT"}}};
  const Device head{0x044C2C52,
                    {},
                    {{"Position", "DINT"}},
                    "<Slots SlotIndexIncrement='#x10' SlotPdoIncrement='2'><Slot/><Slot/><Slot/></Slots>"};
  build({terminal, switcher, head});
  std::uint32_t count = 0;
  expectPrint(
      "const static ec_pdo_entry_reg_t domain1_regs[] = {\n"
      "    {0, 0, 0x00000002, 0x00000010, 0x7000, 1, &intOffset[0], &intBitPosition[0]}\t/* Mode */, \n"
      "    {0, 0, 0x00000002, 0x00000010, 0x0000, 0, &intOffset[1], &intBitPosition[1]}\t/* gap */, \n"
      "    {0, 0, 0x00000002, 0x00000010, 0x7000, 3, &intOffset[2], &intBitPosition[2]}\t/* Set point */, \n"
      "    {0, 0, 0x00000002, 0x00000010, 0x6000, 1, &intOffset[3], &intBitPosition[3]}\t/* Level */, \n"
      "    {0, 2, 0x00000002, 0x044C2C52, 0x6000, 1, &intOffset[4], &intBitPosition[4]}\t/* Position */\n"
      "    {}\n};\n\n"
      "Slave 0 configration:\n\n"
      "static ec_pdo_entry_info_t m_pPDOEntryArray[] = {\n"
      "    {0x7000, 1, 8}\t/* Mode */, \n"
      "    {0x0, 0, 8}\t/* gap */, \n"
      "    {0x7000, 3, 16}\t/* Set point */, \n"
      "    {0x6000, 1, 16}\t/* Level */\n"
      "};\n\n"
      "static ec_pdo_info_t m_pPDOInfoArray[] = {\n"
      "    {0x1600, 3, &m_pPDOEntryArray[0]}, \n"
      "    {0x1A00, 1, &m_pPDOEntryArray[3]}\n"
      "};\n\n"
      "static ec_sync_info_t m_pSyncInfoArray[] = {\n"
      "    {2, EC_DIR_OUTPUT, 1, &m_pPDOInfoArray[0]}, \n"
      "    {3, EC_DIR_INPUT, 1, &m_pPDOInfoArray[1]}, \n"
      "    {0xff}\n};\n\n"
      "Slave 2 configration:\n\n"
      "static ec_pdo_entry_info_t m_pPDOEntryArray[] = {\n"
      "    {0x6000, 1, 32}\t/* Position */\n"
      "};\n\n"
      "static ec_pdo_info_t m_pPDOInfoArray[] = {\n"
      "    {0x1A00, 1, &m_pPDOEntryArray[0]}\n"
      "};\n\n"
      "static ec_sync_info_t m_pSyncInfoArray[] = {\n"
      "    {3, EC_DIR_INPUT, 1, &m_pPDOInfoArray[0]}, \n"
      "    {0xff}\n};\n\n",
      "", [&] { EXPECT_TRUE(igh_master_scan(0, &count)); });
  EXPECT_EQ(count, 3U);

  const auto number = [](auto getter, std::uint32_t slave) {
    std::uint32_t value = 0;
    EXPECT_EQ(getter(0, slave, &value), getter(0, slave, nullptr));
    return getter(0, slave, &value) ? static_cast<int>(value) : -1;
  };
  EXPECT_EQ(number(igh_master_get_slave_product_code, 1), 0x99); // the bus value of a switcher
  EXPECT_EQ(number(igh_master_get_slave_product_code, 2), 0x044C2C52);
  EXPECT_EQ(number(igh_master_get_slave_revision_code, 1), 1);
  EXPECT_EQ(number(igh_master_get_slave_revision_code, 3), -1);
  EXPECT_EQ(number(igh_master_get_slot_number, 2), 3);
  EXPECT_EQ(number(igh_master_get_slot_index_increment, 2), 0x10);
  EXPECT_EQ(number(igh_master_get_slot_pdo_increment, 2), 2);
  EXPECT_EQ(number(igh_master_get_slot_number, 0), 1);
  EXPECT_EQ(number(igh_master_get_slot_number, 1), -1); // no description
  EXPECT_EQ(number(igh_master_get_slot_pdo_increment, 3), -1);
}

TEST_F(Scenario, ScanKeepsAtMost255Slaves) {
  build(std::vector<Device>(300, switcher));
  std::uint32_t count = 0;
  expectPrint("", "", [&] { EXPECT_TRUE(igh_master_scan(0, &count)); });
  EXPECT_EQ(count, 255U);
  EXPECT_TRUE(igh_master_config_slave(0, 254));
  EXPECT_FALSE(igh_master_config_slave(0, 255));
}

TEST_F(Scenario, EmptyBusIsNoScanAndActivationWithoutScanIsSilent) {
  build({});
  std::uint32_t count = 9;
  std::uint32_t state = 9;
  expectPrint("", "", [&] {
    EXPECT_FALSE(igh_master_active(0));
    EXPECT_FALSE(igh_master_scan(0, &count));
    EXPECT_FALSE(igh_master_scan(0, nullptr));
    EXPECT_FALSE(igh_master_active(0));
    cycleWith([] { ADD_FAILURE() << "no cycle before a scan"; });
    EXPECT_TRUE(igh_master_get_state(0, &state));
  });
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(state, 0U);
  EXPECT_EQ(bus().callCount(Call::receive) + bus().callCount(Call::send), 0U);
}
