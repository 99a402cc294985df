// A bench for the tests of the simulated master: slaves with a few entries, and the usual road to a cycle.
#ifndef TESTS_SIMULATION_BENCH_H
#define TESTS_SIMULATION_BENCH_H

#include "memory/Allocator.h"

#include <ecrt.h>
#include <ethercat_simulation/Simulation.h>

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace bench {

namespace sim = ethercat_simulation;

using memory::allocations;

constexpr std::uint32_t VENDOR = 0x00000E00;

// Two output bytes on sync manager 2 (0x7000:01, :02) and two input bytes on 3 (0x6000:01, :02).
inline sim::Slave twoWay(std::uint32_t product = 1) {
  sim::Slave slave;
  slave.vendorId = VENDOR;
  slave.productCode = product;
  slave.defaultMapping = {{2, sim::Direction::output, {{0x1600, {{0x7000, 1, 8}, {0x7000, 2, 8}}}}},
                          {3, sim::Direction::input, {{0x1A00, {{0x6000, 1, 8}, {0x6000, 2, 8}}}}}};
  return slave;
}

inline sim::Slave inputOnly(std::uint32_t product = 2) {
  sim::Slave slave = twoWay(product);
  slave.defaultMapping.erase(slave.defaultMapping.begin());
  slave.model = sim::SlaveModel::counter;
  return slave;
}

inline sim::Slave outputOnly(std::uint32_t product = 3) {
  sim::Slave slave = twoWay(product);
  slave.defaultMapping.pop_back();
  return slave;
}

class Bench : public ::testing::Test {
protected:
  void SetUp() override {
    sim::reset();
    ::unsetenv("ETHERCAT_SIMULATION_BUS");
  }

  sim::Bus& bus() { return sim::bus(0); }

  void request(const std::vector<sim::Slave>& slaves = {}) {
    for (const sim::Slave& slave : slaves) {
      bus().addSlave(slave);
    }
    master = ecrt_request_master(0);
    ASSERT_NE(master, nullptr);
    domain = ecrt_master_create_domain(master);
  }

  // The byte offset in the domain, or the error.
  int add(ec_domain_t* target, std::uint16_t position, std::uint32_t product, std::uint16_t index,
          std::uint8_t subindex, unsigned int* bit = nullptr) {
    unsigned int offset = 0;
    const ec_pdo_entry_reg_t rows[] = {{0, position, VENDOR, product, index, subindex, &offset, bit}, {}};
    const int result = ecrt_domain_reg_pdo_entry_list(target, rows);
    return result == 0 ? static_cast<int>(offset) : result;
  }
  // Registers the directions that the slave has.
  ec_slave_config_t* map(std::uint16_t position, std::uint32_t product = 1) {
    add(domain, position, product, 0x7000, 1);
    add(domain, position, product, 0x6000, 1);
    return ecrt_master_slave_config(master, 0, position, VENDOR, product);
  }

  void receive() {
    ecrt_master_receive(master);
    ecrt_domain_process(domain);
  }
  void send() {
    ecrt_domain_queue(domain);
    ecrt_master_send(master);
  }
  void exchange(unsigned int cycles = 1) {
    for (unsigned int i = 0; i < cycles; ++i) {
      receive();
      send();
    }
  }

  ec_domain_state_t domainState() const {
    ec_domain_state_t state{};
    ecrt_domain_state(domain, &state);
    return state;
  }
  std::uint32_t counter() const { return domainState().working_counter; }
  ec_wc_state_t completeness() const { return domainState().wc_state; }
  ec_master_state_t masterState() const {
    ec_master_state_t state{};
    ecrt_master_state(master, &state);
    return state;
  }
  static ec_slave_config_state_t stateOf(const ec_slave_config_t* configuration) {
    ec_slave_config_state_t state{};
    ecrt_slave_config_state(configuration, &state);
    return state;
  }

  // What an application sees: states, L link, s scan; working counter complete (+), partly (-), not (0); of
  // the configurations E those with an error flag and # those whose slave is gone.
  std::string view() const {
    const ec_master_state_t state = masterState();
    std::string text = std::to_string(state.al_states) + (state.link_up != 0 ? "L" : "") +
                       (state.scan_busy != 0 ? "s" : "") + "0-+"[completeness()];
    std::string gone;
    for (std::size_t i = 0; i < configurations.size(); ++i) {
      const ec_slave_config_state_t slave = stateOf(configurations[i]);
      text += slave.error_flag != 0 ? " E" + std::to_string(i) : "";
      gone += slave.online == 0 ? std::to_string(i) : "";
      EXPECT_EQ(slave.operational, slave.al_state == 8);
      EXPECT_EQ(slave.position, slave.online != 0 ? i : 0xFFFFU);
      EXPECT_TRUE(slave.online != 0 || slave.al_state == 0);
    }
    return text + (gone.empty() ? "" : " #" + gone);
  }

  ec_master_t* master = nullptr;
  ec_domain_t* domain = nullptr;
  std::vector<ec_slave_config_t*> configurations;
};

} // namespace bench

#endif
