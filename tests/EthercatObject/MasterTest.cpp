// What only the classes show: the texts of the log, which the exported functions keep silent, and the end of
// the manager.
#include "EthercatObject/EthercatObject.h"

#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using ethercat_simulation::bus;

class Master : public testing::Test {
protected:
  Master() { ethercat_simulation::reset(); }
  static bool collect(unsigned int level, const char* text) {
    lines += std::to_string(level) + " " + text;
    return handled;
  }

  static inline std::string lines;
  static inline bool handled = true;
};

TEST_F(Master, EverySlaveAndEverySwitcherIsToldAtItsLevelOrPrinted) {
  ethercat_simulation::Slave slave;
  slave.vendorId = 0xABC;
  slave.productCode = 0x10;
  slave.revisionNumber = 0x30;
  slave.alias = 7;
  slave.name = "terminal";
  bus().addSlave(slave);
  const std::string found = "slave(7:0) information: revision=(0x00000030), name=terminal, "
                            "product_code=0x00000010, vendor_id=0xABC\n";
  const std::string unknown = "treat slave 0 as switcher\n";
  for (const int sink : {0, 1, 2}) { // one that handles the text, one that does not, none
    handled = sink == 0;
    lines.clear();
    testing::internal::CaptureStdout();
    EXPECT_TRUE(
        CEthercatMaster(0, 1000000, false, false, sink == 2 ? nullptr : collect).scanEthercatSlave(nullptr));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(lines, sink == 2 ? "" : "3 " + found + "1 " + unknown);
    EXPECT_EQ(printed, (sink == 0 ? "" : found + "\n" + unknown + "\n") + "ecrt_release_master\n");
  }
}

TEST_F(Master, TheEndOfTheManagerIsNotTheEndOfTheMasters) {
  bus();
  CEthercatMasterManager::createUniqueEthercatMasterManager(nullptr);
  CEthercatMasterManager* const manager = CEthercatMasterManager::getUniqueEthercatMasterManager();
  EXPECT_TRUE(manager->createEthercatMaster(0, 1000000, false, false));
  EXPECT_FALSE(manager->createEthercatMaster(0, 1000000, false, false));
  const std::unique_ptr<CEthercatMaster> master(manager->findEthercatMaster(0));
  delete manager;
  EXPECT_TRUE(bus().reserved());
}

} // namespace
