#include "EthercatObject/EthercatObject.h"

#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(Manager, ItsEndIsNotTheEndOfTheMasters) {
  ethercat_simulation::reset();
  ethercat_simulation::Bus& bus = ethercat_simulation::bus();
  CEthercatMasterManager::createUniqueEthercatMasterManager(nullptr);
  CEthercatMasterManager* const manager = CEthercatMasterManager::getUniqueEthercatMasterManager();
  EXPECT_TRUE(manager->createEthercatMaster(0, 1000000, false, false));
  EXPECT_FALSE(manager->createEthercatMaster(0, 1000000, false, false));
  EXPECT_EQ(manager->getEthercatMasterCount(), 1U);
  std::unique_ptr<CEthercatMaster> master(manager->findEthercatMaster(0));
  delete manager;
  EXPECT_TRUE(bus.reserved());
  master.reset();
  EXPECT_FALSE(bus.reserved());

  // Ended by its own operation, it takes them along.
  CEthercatMasterManager::createUniqueEthercatMasterManager(nullptr);
  CEthercatMasterManager::getUniqueEthercatMasterManager()->createEthercatMaster(0, 1000000, false, false);
  CEthercatMasterManager::destroyUniqueEthercatMasterManager();
  EXPECT_FALSE(bus.reserved());
  EXPECT_EQ(CEthercatMasterManager::getUniqueEthercatMasterManager(), nullptr);
}

} // namespace
