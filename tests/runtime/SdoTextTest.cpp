// The texts of the SDO service. The exported functions keep the log of a master silent, so this one has its
// own.
#include "EthercatObject/EthercatObject.h"

#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>

namespace {

std::vector<std::string> texts;

bool collect(unsigned int level, const char* text) {
  if (level == 3) {
    texts.emplace_back(text);
  }
  return level == 3;
}

TEST(SdoText, EveryStepOfAReadAndAWriteReportsItself) {
  ethercat_simulation::reset();
  ethercat_simulation::Slave slave;
  slave.objects = {{0x2000, 0, {1}}};
  ethercat_simulation::bus().addSlave(slave);
  ethercat_simulation::bus().setSdoCycles(2);
  testing::internal::CaptureStdout();
  CEthercatMaster master(0, 1000000, false, false, collect);
  unsigned int id = 0;
  master.scanEthercatSlave(nullptr);
  master.configAllSlaves();
  EXPECT_TRUE(master.createSdoRequest(0, 0x2000, 0, DATA_TYPE_USINT, 0, true, &id));
  EXPECT_TRUE(master.createSdoRequest(0, 0x2000, 0, DATA_TYPE_USINT, 0, false, &id));
  EXPECT_TRUE(master.active());
  for (int i = 0; i < 20; ++i) {
    master.exchange(nullptr, nullptr);
  }
  double value = 0;
  for (const bool read : {true, false}) {
    const std::string start = read ? "ReadSDO:" : "WriteSDO:";
    texts.clear();
    ethercat_simulation::bus().setSdoFault(0, 0x2000, 0, ethercat_simulation::SdoFault::abort);
    bool done = false;
    EXPECT_TRUE(read ? master.readSdo(id, &value, &done) : master.writeSdo(id, 9, &done));
    for (int i = 0; i < 20 && !done; ++i) {
      if (!texts.empty() && texts.back() == start + "EC_REQUEST_ERROR\n") {
        ethercat_simulation::bus().setSdoFault(0, 0x2000, 0, ethercat_simulation::SdoFault::none);
      }
      master.exchange(nullptr, nullptr);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{start + "ecrt_sdo_request_" + (read ? "read" : "write") +
                                                   " called!\n",
                                               start + "EC_REQUEST_BUSY\n", start + "EC_REQUEST_ERROR\n",
                                               start + "EC_REQUEST_BUSY\n", start + "EC_REQUEST_SUCCESS\n"}));
  }
  EXPECT_EQ(value, 1);
  EXPECT_EQ(ethercat_simulation::bus().objectValue(0, 0x2000, 0), std::vector<std::uint8_t>{9});
  testing::internal::GetCapturedStdout();
}

} // namespace
