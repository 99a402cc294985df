// What the master hands its parts, without one: a simulated bus and its reserved master.
#pragma once

#include <ecrt.h>
#include <ethercat_simulation/Simulation.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace runtime_test {

using ethercat_simulation::bus;
using ethercat_simulation::Call;
using Bytes = std::vector<std::uint8_t>;

// Two slaves with an object of one byte and one of two.
class Platform : public testing::Test {
protected:
  Platform() {
    ethercat_simulation::reset();
    ethercat_simulation::Slave slave;
    slave.objects = {{0x2000, 0, {1}}, {0x2000, 1, {2, 0}}};
    bus().addSlave(slave);
    bus().addSlave(slave);
    master = ecrt_request_master(0);
  }
  ~Platform() override {
    ecrt_release_master(master);
    EXPECT_EQ(bus().misuse().total(), 0U) << testing::PrintToString(bus().misuse().lines);
    ethercat_simulation::reset();
  }
  ec_slave_config_t* configure(std::uint16_t position) const {
    return ecrt_master_slave_config(master, 0, position, 0, 0);
  }
  // What is printed on standard output and error.
  template <class RUN> static std::string textOf(RUN run) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run();
    return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
  }

  ec_master_t* master = nullptr;
};

} // namespace runtime_test
