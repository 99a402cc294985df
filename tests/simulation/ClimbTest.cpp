#include "Bench.h"

using namespace bench;

namespace {

class ClimbTest : public Bench {
protected:
  void start() {
    request();
    for (std::uint16_t position = 0; position < 2; ++position) {
      configuration[position] = ecrt_master_slave_config(master, 0, position, vendor, 1);
      ASSERT_EQ(add(domain, position, 1, 0x7000, 1, &offset[position]), 0);
    }
    ASSERT_EQ(ecrt_master_activate(master), 0);
  }

  ec_slave_config_t* configuration[2] = {};
  unsigned int offset[2] = {};
};

TEST_F(ClimbTest, ConfiguredSlavesClimbFromTheBottomWhileFramesGoAndFreezeWithThem) {
  bus().addSlave(twoWay());
  bus().addSlave(twoWay());
  bus().addSlave(inputOnly()); // without configuration
  start();
  std::vector<unsigned int> masterStates;
  std::vector<unsigned int> slaveStates;
  const auto note = [](std::vector<unsigned int>& list, unsigned int value) {
    if (list.empty() || list.back() != value) {
      list.push_back(value);
    }
  };
  EXPECT_TRUE(stateOf(configuration[0]).ready);
  for (int i = 0; i < 20; ++i) {
    exchange();
    note(masterStates, masterState().al_states);
    note(slaveStates, stateOf(configuration[0]).al_state);
    const auto state = stateOf(configuration[0]);
    EXPECT_EQ(state.operational, state.al_state == 8);
    EXPECT_EQ(state.ready, i == 0 || state.al_state == 8) << i;
    if (i == 6) { // in the middle of it: received, not sent
      receive();
      note(masterStates, masterState().al_states);
      const auto frozen = masterStates;
      for (int j = 0; j < 50; ++j) {
        receive();
        note(masterStates, masterState().al_states);
      }
      EXPECT_EQ(masterStates, frozen);
      send();
    }
  }
  EXPECT_THAT(slaveStates, ::testing::ElementsAre(2, 1, 2, 4, 8));
  EXPECT_THAT(masterStates, ::testing::ElementsAre(2, 1 | 2, 2, 2 | 4, 2 | 4 | 8, 2 | 8));
  EXPECT_EQ(stateOf(configuration[1]).position, 1U);
  const ec_master_state_t state = masterState();
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&state);
  EXPECT_EQ(bytes[0], 3);
  EXPECT_EQ(bytes[4], 0x1A); // link up, OP and PREOP
  bus().setMaximumState(1, 4);
  exchange(5);
  EXPECT_EQ(masterState().al_states, 2U | 4U | 8U);
  EXPECT_TRUE(stateOf(configuration[1]).error_flag);
  bus().setMaximumState(1, 8);
  exchange(5);
  EXPECT_TRUE(stateOf(configuration[1]).operational);
  bus().setErrorFlag(0, true);
  ec_slave_info_t info{};
  EXPECT_EQ(ecrt_master_get_slave(master, 0, &info), 0);
  EXPECT_TRUE(info.error_flag && stateOf(configuration[0]).error_flag);
}

TEST_F(ClimbTest, ALostAndAReturningSlaveMakeTheMasterScanWhileTheOthersExchange) {
  bus().addSlave(twoWay());
  bus().addSlave(twoWay());
  start();
  exchange(20);
  ec_slave_info_t info{};
  const auto expectScan = [&](unsigned int responding) {
    for (int i = 0; i < 5; ++i) {
      exchange();
      EXPECT_TRUE(masterState().scan_busy) << i;
      EXPECT_EQ(masterState().slaves_responding, responding);
      const auto state = stateOf(configuration[0]);
      EXPECT_TRUE(!state.online && state.al_state == 0 && state.position == 0xFFFF);
      EXPECT_EQ(ecrt_master_get_slave(master, 0, &info), -EINVAL);
      EXPECT_EQ(bus().alState(0), 8);
    }
    exchange();
    EXPECT_FALSE(masterState().scan_busy);
    EXPECT_TRUE(stateOf(configuration[0]).operational) << "it never left OP";
  };
  bus().removeSlave(1);
  expectScan(1);
  EXPECT_EQ(counter(), 1U);
  EXPECT_FALSE(stateOf(configuration[1]).online);
  bus().insertSlave(1, twoWay());
  expectScan(2);
  EXPECT_TRUE(stateOf(configuration[1]).online);
  EXPECT_EQ(counter(), 1U);
  exchange(20);
  EXPECT_TRUE(stateOf(configuration[1]).operational);
  EXPECT_EQ(counter(), 2U);

  bus().setLinkUp(false);
  exchange(2);
  EXPECT_TRUE(!masterState().link_up && masterState().slaves_responding == 0 && masterState().al_states == 0);
  EXPECT_FALSE(stateOf(configuration[0]).online);
  EXPECT_EQ(completeness(), EC_WC_ZERO);
  bus().setLinkUp(true);
  EXPECT_FALSE(masterState().link_up) << "send looks at the link";
  ecrt_master_send(master);
  ec_master_link_state_t link{};
  EXPECT_EQ(ecrt_master_link_state(master, 0, &link), 0);
  EXPECT_TRUE(link.link_up);
  EXPECT_EQ(ecrt_master_link_state(master, 1, &link), -EINVAL);
  expectScan(2);
  EXPECT_EQ(bus().misuse().total(), 0U);
}

TEST_F(ClimbTest, BetweenRequestAndActivationTheListOfSlavesStaysAsItIs) {
  bus().addSlave(twoWay());
  request();
  bus().addSlave(twoWay());
  ec_slave_info_t info{};
  EXPECT_EQ(masterState().slaves_responding, 2U);
  EXPECT_EQ(ecrt_master_get_slave(master, 1, &info), -EINVAL);
  ec_slave_config_t* late = ecrt_master_slave_config(master, 0, 1, vendor, 1);
  EXPECT_FALSE(stateOf(late).online);
  EXPECT_EQ(ecrt_master_activate(master), 0);
  exchange(8);
  EXPECT_EQ(ecrt_master_get_slave(master, 1, &info), 0);
  EXPECT_TRUE(stateOf(late).online);
  bus().setWireBroken(0, true);
  bus().addSlave(twoWay()); // behind one that no frame reaches
  exchange(8);
  EXPECT_EQ(masterState().slaves_responding, 1U);
}

TEST_F(ClimbTest, AConfigurationFindsItsSlaveByAliasAndOffsetAndTheFirstOneHasIt) {
  sim::Slave named = twoWay();
  named.alias = 77;
  for (const sim::Slave& slave : {twoWay(), named, twoWay()}) {
    bus().addSlave(slave);
  }
  request();
  EXPECT_EQ(stateOf(ecrt_master_slave_config(master, 77, 1, vendor, 1)).position, 2U);
  EXPECT_EQ(stateOf(ecrt_master_slave_config(master, 77, 2, vendor, 1)).position, 0xFFFFU);
  EXPECT_FALSE(stateOf(ecrt_master_slave_config(master, 0, 2, vendor, 1)).online) << "has a configuration";
  EXPECT_FALSE(stateOf(ecrt_master_slave_config(master, 0, 0, vendor, 9)).online) << "another product";
}

} // namespace
