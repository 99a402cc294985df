// A bus with one drive, for tests that run commands in this process.
#pragma once

#include "Program.h"

#include <ethercat_simulation/Simulation.h>

using namespace ethercat_simulation;

class OneDrive : public testing::Test {
protected:
  explicit OneDrive(std::vector<Object> objects) {
    reset();
    bus().setClimbCycles(1);
    Slave drive;
    std::tie(drive.vendorId, drive.productCode, drive.revisionNumber) = std::tuple(0x0B0BU, 0x500U, 0x20001U);
    drive.name = "EM500";
    drive.objects = std::move(objects);
    bus().addSlave(drive);
  }
  void TearDown() override {
    EXPECT_EQ(bus().misuse().total(), 0U) << testing::PrintToString(bus().misuse().lines);
    EXPECT_FALSE(bus().reserved());
    reset();
  }
};
