// States, scans and transfers, with fast timing and with the times of the real master; time passes by cycles:
// 1 ms each, unless said.
#include "Bench.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace bench;

namespace {

using sim::Timing;

class TimingTest : public Bench {
protected:
  void begin(Timing timing, int cycleUs = 1000) {
    sim::reset();
    bus().setTiming(timing);
    bus().setCycleTime(std::chrono::microseconds(cycleUs));
  }
  void build(std::uint16_t slaves, Timing timing = Timing::real, int cycleUs = 1000) {
    begin(timing, cycleUs);
    sim::Slave slave = twoWay();
    slave.objects = {{0x2000, 0, {1, 2}, false}};
    request(std::vector<sim::Slave>(slaves, slave));
    count = slaves;
    activate();
  }
  void activate() {
    configurations.clear();
    for (std::uint16_t i = 0; i < count; ++i) {
      configurations.push_back(map(i));
    }
    sdo = ecrt_slave_config_create_sdo_request(configurations[0], 0x2000, 0, 2);
    EXPECT_EQ(ecrt_master_activate(master), 0);
  }
  void buildInOp(std::uint16_t slaves, Timing timing = Timing::real) {
    build(slaves, timing);
    exchange(3000);
    ASSERT_EQ(masterState().al_states, 8U);
  }
  // "cycle:view" at each change, cycles from 1 on.
  std::string course(unsigned int cycles) {
    std::string all;
    std::string last;
    for (unsigned int cycle = 1; cycle <= cycles; ++cycle) {
      exchange();
      if (const std::string now = view(); now != last) {
        all += (all.empty() ? "" : ", ") + std::to_string(cycle) + ":" + now;
        last = now;
      }
    }
    return all;
  }

  std::uint16_t count = 0;
  ec_sdo_request_t* sdo = nullptr;
};

TEST_F(TimingTest, SlavesClimbOneAfterTheOtherInTimeNotInCycles) {
  build(8);
  EXPECT_EQ(course(900), "1:2L0, 83:2L-, 349:10L-, 825:10L+, 850:8L+");
  build(8, Timing::real, 250);
  EXPECT_EQ(course(3600), "1:2L0, 323:2L-, 1393:10L-, 3291:10L+, 3394:8L+");
  build(1);
  EXPECT_EQ(course(900), "1:2L0, 41:1L0, 57:2L0, 83:2L+, 97:4L+, 116:8L+");
}

TEST_F(TimingTest, AfterAStartOnTheSameSlavesTheFirstStatesAreOldOnes) {
  buildInOp(8);
  const std::string again = "1:8L0, 2:8L+, 141:2L+, 142:2L0, 222:2L-, 489:10L-, 964:10L+, 989:8L+";
  receive();
  *ecrt_domain_data(domain) = 7;
  send();
  ecrt_master_deactivate(master);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{7, 0}));
  domain = ecrt_master_create_domain(master);
  activate();
  EXPECT_EQ(ecrt_domain_data(domain), nullptr) << "all but the image works";
  EXPECT_EQ(course(1200), again);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{0, 0}));
  ecrt_release_master(master);
  request();
  activate();
  EXPECT_NE(ecrt_domain_data(domain), nullptr) << "a new reservation";
  EXPECT_EQ(course(1200), again);
  ecrt_master_deactivate(master);
  EXPECT_EQ(masterState().al_states, 8U);
  domain = ecrt_master_create_domain(master);
  add(domain, 0, 1, 0x7000, 1);
  EXPECT_EQ(ecrt_master_activate(master), 0);
  exchange(2);
  EXPECT_EQ(counter(), 0U) << "other registrations are not answered";
  ecrt_master_deactivate(master);
  bus().passTime(std::chrono::milliseconds(150));
  EXPECT_EQ(masterState().al_states, 2U);
}

TEST_F(TimingTest, WithoutAnswersTheStatesGoToZeroAndABusThatComesBackIsScannedInItsOldState) {
  buildInOp(8);
  bus().dropFrames(1000);
  EXPECT_EQ(course(2000), "1:8L+, 2:8L0, 86:0L0 #01234567, 1002:8Ls+ #01234567, 1587:8L+");
  const auto setResponding = [&](bool responding) {
    for (unsigned int slave = 0; slave < 8; ++slave) {
      bus().setResponding(slave, responding);
    }
  };
  setResponding(false);
  EXPECT_EQ(course(500), "1:8L+, 2:8L0, 85:0L0 #01234567");
  bus().setLinkUp(false);
  exchange(100);
  setResponding(true);
  bus().setLinkUp(true);
  EXPECT_EQ(course(1000), "1:00 #01234567, 10:0L0 #01234567, 11:8Ls+ #01234567, 596:8L+");
  bus().setLinkUp(false);
  EXPECT_EQ(course(1000), "1:8+, 2:80, 19:00 #01234567");
}

TEST_F(TimingTest, ABrokenWireAndANewSlaveAreNoticedAndScanned) {
  buildInOp(8);
  bus().setWireBroken(4, true);
  EXPECT_EQ(course(1000), "1:8L+, 2:8L-, 21:8L- E5, 29:8Ls- #01234567, 614:8L- #567");
  bus().setWireBroken(4, false);
  EXPECT_EQ(course(1000), "1:8L- #567, 2:8L+ #567, 9:8Ls+ #01234567, 594:8L+");
  bus().addSlave(twoWay());
  EXPECT_EQ(course(1000), "1:8L+, 9:9Ls+ #01234567, 594:9L+, 623:10L+");
}

TEST_F(TimingTest, AFallIsMendedInSilenceARefusalIsFlaggedForEver) {
  buildInOp(1);
  bus().setAlError(0, 4, 0x001B);
  bus().setAlError(0, 4, 0);
  EXPECT_EQ(course(200), "1:8L+, 12:4L+, 76:8L+");
  bus().setAlError(0, 4, 0x001A);
  EXPECT_EQ(course(200), "1:8L+, 4:4L+, 73:4L+ E0");
  bus().setAlError(0, 4, 0);
  EXPECT_EQ(course(5000), "1:4L+ E0");
}

TEST_F(TimingTest, WithFastTimingTheSameHappensWithinAFewCycles) {
  build(2, Timing::fast);
  bus().addSlave(inputOnly()); // without configuration
  EXPECT_TRUE(stateOf(configurations[0]).ready);
  EXPECT_EQ(course(6), "1:2L0, 2:3Ls0 #01");
  receive();
  const std::string frozen = view();
  for (int i = 0; i < 50; ++i) {
    receive();
  }
  EXPECT_EQ(view(), frozen) << "received, not sent";
  send();
  EXPECT_EQ(course(20), "1:3L0, 6:2L0, 7:6L-, 8:6L+, 9:14L+, 10:10L+");
  bus().setMaximumState(1, 4);
  EXPECT_EQ(course(5), "1:14L+, 3:14L+ E1");
  bus().setMaximumState(1, 8);
  EXPECT_EQ(course(5), "1:14L+, 4:10L+");
  bus().removeSlave(1);
  EXPECT_EQ(course(10), "1:10Ls+ #01, 2:10Ls- #01, 6:10L- #1");
  bus().insertSlave(1, twoWay());
  EXPECT_EQ(course(30), "1:11Ls- #01, 6:11L-, 12:10L-, 14:14L+, 16:10L+");
  bus().setLinkUp(false);
  EXPECT_EQ(course(10), "1:10+, 2:00 #01");
  bus().setLinkUp(true);
  EXPECT_FALSE(masterState().link_up) << "send looks at the link";
  ecrt_master_send(master);
  EXPECT_EQ(course(30), "1:10Ls0 #01, 2:10Ls+ #01, 6:10L+");
  bus().setWireBroken(0, true);
  bus().addSlave(twoWay()); // behind one that no frame reaches
  bus().setPowered(0, false);
  bus().setPowered(0, true);
  exchange(8);
  EXPECT_EQ(masterState().slaves_responding, 1U);
  EXPECT_EQ(bus().misuse().total(), 0U);
}

TEST_F(TimingTest, OnlyAnActiveMasterAsksForOpAndScans) {
  for (const Timing timing : {Timing::real, Timing::fast}) {
    begin(timing);
    request({twoWay()});
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, 0, VENDOR, 1);
    bus().addSlave(twoWay());
    ec_slave_config_t* late = ecrt_master_slave_config(master, 0, 1, VENDOR, 1);
    exchange(2000);
    ec_slave_info_t info{};
    EXPECT_EQ(ecrt_master_get_slave(master, 1, &info), -EINVAL);
    EXPECT_FALSE(stateOf(late).online);
    EXPECT_EQ(bus().alState(0), 2);
    EXPECT_EQ(stateOf(configuration).al_state, 2U);
    EXPECT_EQ(ecrt_master_activate(master), 0);
    exchange(2000);
    EXPECT_TRUE(stateOf(late).online);
  }
}

TEST_F(TimingTest, AConfigurationFindsItsSlaveByAliasAndOffset) {
  sim::Slave first = twoWay(), second = twoWay();
  first.alias = 76;
  second.alias = 77;
  request({first, second, twoWay()});
  EXPECT_EQ(stateOf(ecrt_master_slave_config(master, 77, 1, VENDOR, 1)).position, 2U);
  EXPECT_EQ(stateOf(ecrt_master_slave_config(master, 77, 2, VENDOR, 1)).position, 0xFFFFU);
  EXPECT_EQ(stateOf(ecrt_master_slave_config(master, 0, 2, VENDOR, 1)).position, 0xFFFFU) << "has one";
}

TEST_F(TimingTest, TransfersAndRegistersAreAsTheRealMasterGivesThem) {
  sim::Slave mute = twoWay();
  mute.coe = false;
  request({mute});
  std::uint8_t answer[4];
  std::size_t size = 0;
  std::uint32_t abort = 0;
  EXPECT_EQ(ecrt_master_sdo_upload(master, 0, 0x2000, 0, answer, 4, &size, &abort), -EPROTONOSUPPORT);
  buildInOp(2);
  ecrt_sdo_request_read(sdo);
  exchange(32);
  EXPECT_EQ(ecrt_sdo_request_state(sdo), EC_REQUEST_BUSY);
  exchange(1);
  EXPECT_EQ(ecrt_sdo_request_state(sdo), EC_REQUEST_SUCCESS);
  EXPECT_EQ(bus().registers(1, 0x0004, 6), (std::vector<std::uint8_t>{16, 16, 8, 0x0F, 0xCC, 0x01}));
  EXPECT_EQ(bus().registers(0, 0x0110, 2), (std::vector<std::uint8_t>{0x31, 0x5A}));
  EXPECT_EQ(bus().registers(1, 0x0110, 2), (std::vector<std::uint8_t>{0x11, 0x56}));
}

TEST_F(TimingTest, RequestedStatesTakeTheirTime) {
  buildInOp(2);
  const int device = open("/dev/EtherCAT0", O_RDWR);
  const auto courseTo = [&](std::uint16_t state) {
    std::uint16_t wish[] = {1, state}; // position, and the state in one byte
    EXPECT_EQ(ioctl(device, 0x4004A40BUL, wish), 0);
    return course(700);
  };
  EXPECT_EQ(courseTo(1), "1:8L+, 118:9L+");
  EXPECT_EQ(courseTo(2), "1:9L+, 114:10L+");
  EXPECT_EQ(courseTo(4), "1:10L+, 34:10L-, 38:9L-, 62:10L-, 82:10L+, 110:12L+");
  close(device);
}

} // namespace
