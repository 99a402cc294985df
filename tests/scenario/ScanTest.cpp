#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, ScanMatchesSlavesAndPrintsTheListingByteForByte) {
  const Device terminal{0x10, {{"Mode", "USINT"}, {"gap", "USINT"}}};
  const Device head{0x044C2C52,
                    {},
                    {{"Position", "DINT"}},
                    "<Slots SlotIndexIncrement='#x10' SlotPdoIncrement='2'><Slot/><Slot/><Slot/></Slots>"};
  build({terminal, switcher, head});
  std::uint32_t count = 0;
  const std::string regs =
      "const static ec_pdo_entry_reg_t domain1_regs[] = {\n"
      "    {0, 0, 0x00000002, 0x00000010, 0x7000, 1, &intOffset[0], &intBitPosition[0]}\t/* Mode */, \n"
      "    {0, 0, 0x00000002, 0x00000010, 0x0000, 0, &intOffset[1], &intBitPosition[1]}\t/* gap */, \n"
      "    {0, 2, 0x00000002, 0x044C2C52, 0x6000, 1, &intOffset[2], &intBitPosition[2]}\t/* Position */\n"
      "    {}\n};\n\n";
  const std::string entries = " configration:\n\nstatic ec_pdo_entry_info_t m_pPDOEntryArray[] = {\n";
  const std::string pdos = "};\n\nstatic ec_pdo_info_t m_pPDOInfoArray[] = {\n";
  const std::string syncs = "};\n\nstatic ec_sync_info_t m_pSyncInfoArray[] = {\n";
  const std::string end = ", 1, &m_pPDOInfoArray[0]}, \n    {0xff}\n};\n\n";
  expectPrint(regs + "Slave 0" + entries + "    {0x7000, 1, 8}\t/* Mode */, \n    {0x0, 0, 8}\t/* gap */\n" +
                  pdos + "    {0x1600, 2, &m_pPDOEntryArray[0]}\n" + syncs + "    {2, EC_DIR_OUTPUT" + end +
                  "Slave 2" + entries + "    {0x6000, 1, 32}\t/* Position */\n" + pdos +
                  "    {0x1A00, 1, &m_pPDOEntryArray[0]}\n" + syncs + "    {3, EC_DIR_INPUT" + end,
              "", [&] { EXPECT_TRUE(igh_master_scan(0, &count)); });
  EXPECT_EQ(count, 3U);

  const auto numbers = [](auto getter) { // of the three slaves and the one behind
    std::vector<int> all;
    for (std::uint32_t slave = 0; slave < 4; ++slave) {
      std::uint32_t value = 0;
      EXPECT_EQ(getter(0, slave, &value), getter(0, slave, nullptr));
      all.push_back(getter(0, slave, &value) ? static_cast<int>(value) : -1);
    }
    return all;
  };
  using Numbers = std::vector<int>;
  EXPECT_EQ(numbers(igh_master_get_slave_product_code), (Numbers{0x10, 0x99, 0x044C2C52, -1}));
  EXPECT_EQ(numbers(igh_master_get_slave_revision_code), (Numbers{1, 1, 1, -1}));
  EXPECT_EQ(numbers(igh_master_get_slot_number), (Numbers{1, -1, 3, -1}));
  EXPECT_EQ(numbers(igh_master_get_slot_index_increment), (Numbers{0, -1, 0x10, -1}));
  EXPECT_EQ(numbers(igh_master_get_slot_pdo_increment), (Numbers{0, -1, 2, -1}));
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
  expectPrint("", "", [&] {
    EXPECT_FALSE(igh_master_active(0));
    EXPECT_FALSE(igh_master_scan(0, &count));
    EXPECT_FALSE(igh_master_active(0));
    cycleWith([] { ADD_FAILURE() << "no cycle before a scan"; });
  });
  EXPECT_TRUE(count == 0 && stateOf() == 0);
  EXPECT_EQ(bus().callCount(Call::receive) + bus().callCount(Call::send), 0U);
}
