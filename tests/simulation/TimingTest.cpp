// The times of the real master, in a time that passes by cycles: 1 ms each, unless said.
#include "Bench.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace bench;

namespace {

class TimingTest : public Bench {
protected:
  void build(std::uint16_t slaves, std::chrono::nanoseconds cycleTime = std::chrono::milliseconds(1)) {
    bus().setTiming(sim::Timing::real);
    bus().setCycleTime(cycleTime);
    for (std::uint16_t i = 0; i < slaves; ++i) {
      sim::Slave slave = twoWay();
      slave.objects = {{0x2000, 0, {1, 2}, false}};
      bus().addSlave(slave);
    }
    count = slaves;
    request();
    activate();
  }
  void activate() {
    configurations.clear();
    for (std::uint16_t i = 0; i < count; ++i) {
      configurations.push_back(ecrt_master_slave_config(master, 0, i, vendor, 1));
      unsigned int offset = 0;
      EXPECT_EQ(add(domain, i, 1, 0x7000, 1, &offset), 0);
      EXPECT_EQ(add(domain, i, 1, 0x6000, 1, &offset), 0);
    }
    sdo = ecrt_slave_config_create_sdo_request(configurations[0], 0x2000, 0, 2);
    EXPECT_EQ(ecrt_master_activate(master), 0);
  }
  void buildInOp(std::uint16_t slaves) {
    build(slaves);
    exchange(3000);
    ASSERT_EQ(masterState().al_states, 8U);
  }
  // What an application sees: states, L link, s scan; working counter complete (+), partly (-), not (0); the
  // slaves with an error flag.
  std::string view() const {
    const ec_master_state_t state = masterState();
    std::string text = std::to_string(state.al_states) + (state.link_up != 0 ? "L" : "") +
                       (state.scan_busy != 0 ? "s" : "") + "0-+"[completeness()];
    for (std::size_t i = 0; i < configurations.size(); ++i) {
      text += stateOf(configurations[i]).error_flag != 0 ? " E" + std::to_string(i) : "";
    }
    return text;
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
  std::vector<ec_slave_config_t*> configurations;
  ec_sdo_request_t* sdo = nullptr;
};

TEST_F(TimingTest, SlavesClimbOneAfterTheOtherInTimeNotInCycles) {
  build(8);
  EXPECT_EQ(course(900), "1:2L0, 83:2L-, 349:10L-, 825:10L+, 850:8L+");
  sim::reset();
  build(8, std::chrono::microseconds(250));
  EXPECT_EQ(course(3600), "1:2L0, 323:2L-, 1393:10L-, 3291:10L+, 3394:8L+");
  sim::reset();
  build(1);
  EXPECT_EQ(course(900), "1:2L0, 41:1L0, 57:2L0, 83:2L+, 97:4L+, 116:8L+");
}

TEST_F(TimingTest, AfterAStartOnTheSameSlavesTheFirstStatesAreOldOnes) {
  buildInOp(8);
  bus().setReactivationUnmapped(false);
  const std::string again = "1:8L0, 2:8L+, 141:2L+, 142:2L0, 222:2L-, 489:10L-, 964:10L+, 989:8L+";
  receive();
  *ecrt_domain_data(domain) = 7;
  send();
  ecrt_master_deactivate(master);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{7, 0}));
  domain = ecrt_master_create_domain(master);
  activate();
  EXPECT_EQ(course(1200), again);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{0, 0}));
  ecrt_release_master(master);
  request();
  activate();
  EXPECT_EQ(course(1200), again);
  ecrt_master_deactivate(master);
  EXPECT_EQ(masterState().al_states, 8U);
  bus().passTime(std::chrono::milliseconds(150));
  EXPECT_EQ(masterState().al_states, 2U);
}

TEST_F(TimingTest, WithoutAnswersTheStatesGoToZeroAndABusThatComesBackIsScannedInItsOldState) {
  buildInOp(8);
  bus().dropFrames(1000);
  EXPECT_EQ(course(2000), "1:8L+, 2:8L0, 86:0L0, 1002:8Ls+, 1587:8L+");
  for (unsigned int slave = 0; slave < 8; ++slave) {
    bus().setResponding(slave, false);
  }
  EXPECT_EQ(course(500), "1:8L+, 2:8L0, 85:0L0");
  bus().setLinkUp(false);
  exchange(100);
  for (unsigned int slave = 0; slave < 8; ++slave) {
    bus().setResponding(slave, true);
  }
  bus().setLinkUp(true);
  EXPECT_EQ(course(1000), "1:00, 10:0L0, 11:8Ls+, 596:8L+");
  bus().setLinkUp(false);
  EXPECT_EQ(course(1000), "1:8+, 2:80, 19:00");
}

TEST_F(TimingTest, ABrokenWireAndANewSlaveAreNoticedAndScanned) {
  buildInOp(8);
  bus().setWireBroken(4, true);
  EXPECT_EQ(course(1000), "1:8L+, 2:8L-, 21:8L- E5, 29:8Ls-, 614:8L-");
  bus().setWireBroken(4, false);
  EXPECT_EQ(course(1000), "1:8L-, 2:8L+, 9:8Ls+, 594:8L+");
  bus().addSlave(twoWay());
  EXPECT_EQ(course(1000), "1:8L+, 9:9Ls+, 594:9L+, 623:10L+");
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

TEST_F(TimingTest, OnlyAnActiveMasterAsksForOpAndScans) {
  for (const sim::Timing timing : {sim::Timing::real, sim::Timing::fast}) {
    bus().setTiming(timing);
    bus().setCycleTime(std::chrono::milliseconds(1));
    bus().addSlave(twoWay());
    request();
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, 0, vendor, 1);
    bus().addSlave(twoWay());
    exchange(2000);
    ec_slave_info_t info{};
    EXPECT_EQ(ecrt_master_get_slave(master, 1, &info), -EINVAL);
    EXPECT_EQ(bus().alState(0), 2);
    EXPECT_EQ(stateOf(configuration).al_state, 2U);
    sim::reset();
  }
}

TEST_F(TimingTest, RequestedStatesAndTransfersTakeTheirTime) {
  bus().setTiming(sim::Timing::real);
  bus().setCycleTime(std::chrono::milliseconds(1));
  sim::Slave mute = twoWay();
  mute.coe = false;
  bus().addSlave(mute);
  bus().addSlave(twoWay());
  std::uint8_t answer[4];
  std::size_t size = 0;
  std::uint32_t abort = 0;
  master = ecrt_request_master(0);
  EXPECT_EQ(ecrt_master_sdo_upload(master, 0, 0x2000, 0, answer, 4, &size, &abort), -EPROTONOSUPPORT);
  ecrt_release_master(master);
  sim::reset();
  buildInOp(2);
  ecrt_sdo_request_read(sdo);
  int exchanges = 0;
  for (; ecrt_sdo_request_state(sdo) == EC_REQUEST_BUSY; ++exchanges) {
    exchange();
  }
  EXPECT_EQ(exchanges, 33);
  EXPECT_EQ(ecrt_sdo_request_state(sdo), EC_REQUEST_SUCCESS);
  bus().setSdoFault(0, 0x2000, 0, sim::SdoFault::longAnswer);
  ecrt_sdo_request_read(sdo);
  exchange(40);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ecrt_sdo_request_state(sdo), EC_REQUEST_ERROR);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Received 3 bytes do not fit info SDO data memory (2 bytes)!\n");
  EXPECT_EQ(bus().registers(1, 0x0004, 6), (std::vector<std::uint8_t>{16, 16, 8, 0x0F, 0xCC, 0x01}));
  EXPECT_EQ(bus().registers(0, 0x0110, 2), (std::vector<std::uint8_t>{0x31, 0x5A}));
  EXPECT_EQ(bus().registers(1, 0x0110, 2), (std::vector<std::uint8_t>{0x11, 0x56}));
  std::vector<std::string> courses;
  const int device = open("/dev/EtherCAT0", O_RDWR);
  for (std::uint8_t state = 1; state <= 4; state = static_cast<std::uint8_t>(2 * state)) {
    struct {
      std::uint16_t position;
      std::uint8_t state;
    } wish{1, state};
    EXPECT_EQ(ioctl(device, 0x4004A40BUL, &wish), 0);
    courses.push_back(course(700));
  }
  close(device);
  EXPECT_THAT(courses, ::testing::ElementsAre("1:8L+, 117:9L+", "1:9L+, 113:10L+",
                                              "1:10L+, 34:10L-, 37:9L-, 61:10L-, 82:10L+, 109:12L+"));
}

} // namespace
