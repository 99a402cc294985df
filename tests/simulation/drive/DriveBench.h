// A drive of CiA 402 and an application that cycles it.
#ifndef TESTS_SIMULATION_DRIVE_DRIVE_BENCH_H
#define TESTS_SIMULATION_DRIVE_DRIVE_BENCH_H

#include "Bench.h"

#include <cstring>

namespace bench {

inline constexpr int OFF = 0, SHUTDOWN = 0x06, SWITCH_ON = 0x07, ENABLE = 0x0F, QUICK_STOP = 0x0B,
                     RESET = 0x80;
// The lower bits of the statusword.
inline constexpr int DISABLED = 0x40, READY = 0x21, SWITCHED_ON = 0x23, ENABLED = 0x27, STOPPING = 0x07,
                     BRAKING = 0x0F, FAILED = 0x08;

// As they are mapped, without padding between the members.
struct Commands {
  std::int32_t position, velocity;
  std::uint16_t controlword;
  std::int16_t torque;
  std::int8_t mode;
};
inline constexpr int COMMAND_SIZE = 13, FEEDBACK_SIZE = 15;
struct Feedback {
  std::int32_t position, velocity;
  std::uint16_t statusword;
  std::int16_t torque;
  std::uint16_t error;
  std::int8_t mode;
};

class DriveBench : public Bench {
protected:
  void start(std::int8_t mode, std::uint32_t lagUs = 0) {
    sim::Slave slave = twoWay(5);
    slave.model = sim::SlaveModel::drive;
    slave.drive.lagUs = lagUs;
    slave.defaultMapping[0].pdos[0].entries = {
        {0x607A, 0, 32}, {0x60FF, 0, 32}, {0x6040, 0, 16}, {0x6071, 0, 16}, {0x6060, 0, 8}};
    slave.defaultMapping[1].pdos[0].entries = {{0x6064, 0, 32}, {0x606C, 0, 32}, {0x6041, 0, 16},
                                               {0x6077, 0, 16}, {0x603F, 0, 16}, {0x6061, 0, 8}};
    request({slave});
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, 0, VENDOR, 5);
    sdo = ecrt_slave_config_create_sdo_request(configuration, 0x6041, 0, 2);
    ASSERT_EQ(add(domain, 0, 5, 0x607A, 0), 0);
    ASSERT_EQ(add(domain, 0, 5, 0x6064, 0), COMMAND_SIZE);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    commands.mode = mode;
    run(20);
    ASSERT_EQ(bus().alState(0), 8);
  }
  // Outputs of a cycle show in the inputs two cycles later.
  void run(unsigned int cycles) {
    for (unsigned int i = 0; i < cycles; ++i) {
      commands.position += ramp;
      receive();
      std::memcpy(&feedback, ecrt_domain_data(domain) + COMMAND_SIZE, FEEDBACK_SIZE);
      std::memcpy(ecrt_domain_data(domain), &commands, COMMAND_SIZE);
      send();
    }
  }
  // The state some cycles after this controlword.
  int command(int controlword, unsigned int cycles = 3) {
    commands.controlword = static_cast<std::uint16_t>(controlword);
    run(cycles);
    return feedback.statusword & 0x6F;
  }
  int switchOnFully() {
    command(SHUTDOWN);
    return command(ENABLE, 5);
  }

  ec_sdo_request_t* sdo = nullptr;
  Commands commands{};
  Feedback feedback{};
  std::int32_t ramp = 0; // counts per cycle
};

} // namespace bench

#endif
