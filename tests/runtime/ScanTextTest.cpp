// What a scan says of each slave. The exported functions keep the log of a master silent, so this one has its
// own.
#include "EthercatObject/EthercatObject.h"

#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>

namespace {

std::string lines;
bool handled = true;

bool collect(unsigned int level, const char* text) {
  lines += std::to_string(level) + " " + text;
  return handled;
}

TEST(ScanText, EverySlaveAndEverySwitcherIsToldAtItsLevelOrPrinted) {
  ethercat_simulation::reset();
  ethercat_simulation::Slave slave;
  slave.vendorId = 0xABC;
  slave.productCode = 0x10;
  slave.revisionNumber = 0x30;
  slave.alias = 7;
  slave.name = "terminal";
  ethercat_simulation::bus().addSlave(slave);
  const std::string found = "slave(7:0) information: revision=(0x00000030), name=terminal, "
                            "product_code=0x00000010, vendor_id=0xABC\n";
  const std::string unknown = "treat slave 0 as switcher\n";
  for (const int sink : {0, 1, 2}) { // one that handles the text, one that does not, none
    handled = sink == 0;
    lines.clear();
    testing::internal::CaptureStdout();
    {
      CEthercatMaster master(0, 1000000, false, false, sink == 2 ? nullptr : collect);
      EXPECT_TRUE(master.scanEthercatSlave(nullptr));
    }
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(lines, sink == 2 ? "" : std::string("3 ").append(found).append("1 ").append(unknown));
    EXPECT_EQ(printed.substr(0, printed.find("ecrt_release_master\n")),
              sink == 0 ? "" : std::string(found).append("\n").append(unknown).append("\n"));
  }
}

} // namespace
