#include "Bench.h"

using namespace bench;

namespace {

using PackingTest = Bench;

TEST_F(PackingTest, EntriesArePackedToTheBitInBlocksOfOneSyncManagerEach) {
  // Sync manager 2: PDOs of 3, 4 (gap) + 5 and 24 bits without alignment between them, 36 bits in all.
  sim::Slave slave = twoWay();
  slave.defaultMapping[0].pdos = {{0x1600, {{0x7000, 1, 1}, {0x7000, 2, 2}}},
                                  {0x1601, {{0, 0, 4}, {0x7010, 1, 5}}},
                                  {0x1602, {{0x7020, 1, 16}, {0x7000, 1, 8}}}};
  request({slave});
  unsigned int bit[3] = {9, 9, 9};
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 2), 1) << "the inputs come first: they are registered first";
  EXPECT_EQ(ecrt_domain_size(domain), 2U);
  EXPECT_EQ(add(domain, 0, 1, 0x7010, 1, &bit[0]), 2);
  EXPECT_EQ(ecrt_domain_size(domain), 7U);
  EXPECT_EQ(add(domain, 0, 1, 0x7020, 1, &bit[1]), 3);
  EXPECT_EQ(add(domain, 0, 1, 0x7000, 1, &bit[2]), 2) << "the first of two";
  EXPECT_THAT(bit, ::testing::ElementsAre(7, 4, 0));

  ec_domain_t* second = ecrt_master_create_domain(master);
  EXPECT_EQ(add(second, 0, 1, 0x7020, 1), -EFAULT) << "not at a byte";
  EXPECT_EQ(ecrt_domain_size(second), 5U) << "the block stays reserved";
  EXPECT_EQ(add(second, 0, 1, 0x7020, 1, &bit[2]), 1);
}

TEST_F(PackingTest, AListEndsAtIndexZeroOrAtTheFirstErrorAndAnFmmuIsNotToBeHadSeventeenTimes) {
  request({twoWay()});
  unsigned int offset[3] = {9, 9, 9};
  const ec_pdo_entry_reg_t rows[] = {{0, 0, VENDOR, 1, 0x7000, 2, &offset[0], nullptr},
                                     {0, 0, VENDOR, 1, 0x7777, 1, &offset[1], nullptr},
                                     {0, 0, VENDOR, 1, 0x6000, 1, &offset[2], nullptr},
                                     {}};
  EXPECT_EQ(ecrt_domain_reg_pdo_entry_list(domain, rows), -ENOENT);
  EXPECT_THAT(offset, ::testing::ElementsAre(1, 9, 9));
  EXPECT_EQ(ecrt_domain_reg_pdo_entry_list(domain, rows + 3), 0);
  EXPECT_EQ(add(domain, 0, 2, 0x7000, 1), -ENOENT) << "configured as another product";
  EXPECT_EQ(add(domain, 1, 1, 0x7000, 1), -ENOENT) << "no slave there, so nothing is mapped";
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(add(ecrt_master_create_domain(master), 0, 1, 0x6000, 1), i < 15 ? 0 : -EOVERFLOW);
  }
}

TEST_F(PackingTest, ConfiguringPdosReplacesTheListedSyncManagersUpToTheFirstError) {
  request({twoWay()});
  ec_slave_config_t* slave = ecrt_master_slave_config(master, 0, 0, VENDOR, 1);
  EXPECT_EQ(ecrt_slave_config_pdos(slave, EC_END, nullptr), 0);
  const ec_pdo_entry_info_t entries[] = {{0x7100, 1, 32}, {0x7100, 2, 8}};
  const ec_pdo_info_t pdos[] = {{0x1610, 2, entries}, {0x1600, 0, nullptr}, {0x1699, 0, nullptr}};
  const ec_sync_info_t syncs[] = {{2, EC_DIR_OUTPUT, 3, pdos, EC_WD_DEFAULT},
                                  {4, EC_DIR_INPUT, 1, pdos, EC_WD_DEFAULT},
                                  {3, EC_DIR_BOTH, 0, nullptr, EC_WD_DEFAULT},
                                  {3, EC_DIR_INPUT, 0, nullptr, EC_WD_DEFAULT},
                                  {0xFF, EC_DIR_INVALID, 0, nullptr, EC_WD_DEFAULT}};
  EXPECT_EQ(ecrt_slave_config_pdos(slave, EC_END, syncs), -EINVAL);
  EXPECT_EQ(add(domain, 0, 1, 0x7000, 2), 6) << "0x1600 has its default entries, behind 5 bytes of 0x1610";
  EXPECT_EQ(ecrt_domain_size(domain), 7U) << "0x1610 of both sync managers is in the lower one, once";
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 1), 7) << "sync manager 3 was behind the error";
  EXPECT_EQ(ecrt_slave_config_pdos(slave, 1, syncs + 3), 0);
  EXPECT_EQ(ecrt_slave_config_pdos(slave, 0, syncs), 0);
  EXPECT_EQ(add(ecrt_master_create_domain(master), 0, 1, 0x6000, 1), -ENOENT) << "emptied";
  const ec_sync_info_t beyond{16, EC_DIR_INPUT, 0, nullptr, EC_WD_DEFAULT};
  EXPECT_EQ(ecrt_slave_config_pdos(slave, 1, &beyond), -ENOENT);
}

TEST_F(PackingTest, ADomainIsSplitAtBlocksAndABlockBeyondADatagramIsRefused) {
  sim::Slave slave = outputOnly();
  slave.defaultMapping[0].pdos[0].entries.assign(1000, {0x7000, 1, 8});
  request({slave, slave});
  map(0, 3);
  EXPECT_EQ(add(domain, 1, 3, 0x7000, 1), 1000);
  ASSERT_EQ(ecrt_master_activate(master), 0);
  exchange(20);
  EXPECT_EQ(counter(), 2U);
  ecrt_domain_data(domain)[1999] = 7;
  send();
  EXPECT_EQ(bus().outputs(1)[999], 7);

  ecrt_release_master(master);
  sim::reset();
  slave.defaultMapping[0].pdos[0].entries.assign(1487, {0x7000, 1, 8});
  request({slave});
  map(0, 3);
  EXPECT_EQ(ecrt_master_activate(master), -EINVAL);
  EXPECT_FALSE(bus().active());
}

} // namespace
