#include "Bench.h"

using namespace bench;

namespace {

class FaultScheduleTest : public Bench {
protected:
  // Working counters 3 + 3 + 1.
  void start(const sim::Fault& fault, std::uint32_t seed = 1) {
    sim::reset();
    sim::Slave second = twoWay();
    second.objects = {{0x2000, 0, {1}, false}};
    request({twoWay(), second, inputOnly()});
    bus().setClimbCycles(1);
    bus().setScanCycles(2);
    bus().setFaultSeed(seed);
    ASSERT_TRUE(bus().addFault(fault));
    configurations = {map(0), map(1), map(2, 2)};
    sdo = ecrt_slave_config_create_sdo_request(configurations[1], 0x2000, 0, 1);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    cycle = 0;
  }
  void run(unsigned int last) {
    while (cycle < last) {
      receive();
      ecrt_master_application_time(master, ++cycle * 1'000'000ULL);
      ecrt_master_sync_slave_clocks(master);
      send();
    }
  }
  // What the application sees now, the SDO request, reference time or error; and the error counters that are
  // not 0.
  std::string fullView() {
    receive();
    std::uint32_t time = 0;
    const int error = ecrt_master_reference_clock_time(master, &time);
    const auto ahead = static_cast<std::int32_t>(time - static_cast<std::uint32_t>(cycle * 1'000'000ULL));
    std::string text =
        view() + " " + "UBSE"[ecrt_sdo_request_state(sdo)] + " " + std::to_string(error != 0 ? error : ahead);
    for (unsigned int slave = 0; slave < 3; ++slave) {
      const std::vector<std::uint8_t> counters = bus().registers(slave, 0x0300, 0x14);
      for (unsigned int i = 0; i < counters.size(); ++i) {
        char count[24];
        std::snprintf(count, sizeof count, " %u:%X=%u", slave, 0x300 + i, counters[i]);
        text += counters[i] > 0 ? count : "";
      }
    }
    return text;
  }

  ec_sdo_request_t* sdo = nullptr;
  unsigned int cycle = 0;
};

TEST_F(FaultScheduleTest, EveryKindShowsAtTheInterfaceAndPasses) {
  using Kind = sim::FaultKind;
  const struct {
    Kind kind;
    unsigned int slave;
    std::string early, back; // a few cycles after it began, and after it ended
  } cases[] = {
      {Kind::lostFrame, 0, "8L0 B -5 0:300=5 1:308=5 2:308=5", "8L+ S 0 0:300=20 1:308=20 2:308=20"},
      {Kind::lateFrame, 0, "8L0 B -5", "8L+ S 0"},
      {Kind::silentSlave, 1, "8L- B 0 1:30D=1", "8L+ B 0 1:30D=1"},
      {Kind::linkDown, 0, "00 #012 E -5 0:310=1", "8L+ E 0 0:310=1"},
      {Kind::wireBreak, 0, "8L- #12 E 0 0:311=1 1:310=1", "8L+ E 0 0:311=1 1:310=1"},
      {Kind::powerOff, 1, "8L- #12 E 0 0:311=1 1:310=1 1:311=1 2:310=1", "9L- E 0 0:311=1 2:310=1"},
      {Kind::alError, 1, "12L+ E1 E 0", "8L+ E 0"},
      {Kind::sdoAbort, 1, "8L+ E 0", "8L+ E 0"},
      {Kind::sdoSilence, 1, "8L+ B 0", "8L+ B 0"},
      {Kind::errorCounter, 1, "8L+ S 0 1:300=5", "8L+ S 0 1:300=20"},
      {Kind::clockStep, 0, "8L+ S -5000", "8L+ S -5000"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.kind));
    sim::Fault fault{each.kind, 30, 0, 0, 20, each.slave, 0x2000};
    fault.stepNs = -5000;
    start(fault);
    run(29);
    const std::size_t before = allocations();
    run(30);
    ecrt_sdo_request_read(sdo);
    run(34);
    EXPECT_EQ(allocations(), before);
    EXPECT_EQ(fullView(), each.early);
    run(54);
    EXPECT_EQ(fullView(), each.back);
    run(100);
    EXPECT_EQ(view(), "8L+");
    EXPECT_EQ(bus().misuse().total(), 0U);
  }
}

TEST_F(FaultScheduleTest, ChancesRepeatThemselvesWithTheirSeed) {
  const auto losses = [&](const sim::Fault& fault, std::uint32_t seed) {
    start(fault, seed);
    std::vector<unsigned int> cycles;
    for (run(20); cycle < 400; run(cycle + 1), receive()) {
      if (counter() == 0) {
        cycles.push_back(cycle);
      }
    }
    return cycles;
  };
  EXPECT_FALSE(bus().addFault({})) << "never begins";
  EXPECT_FALSE(bus().addFault({sim::FaultKind::silentSlave, 1})) << "no slave there";
  EXPECT_THAT(losses({sim::FaultKind::lostFrame, 0, 90, 0, 2}, 1),
              ::testing::ElementsAre(90, 91, 180, 181, 270, 271, 360, 361));
  const sim::Fault lost{sim::FaultKind::lostFrame, 0, 0, 0.1};
  const std::vector<unsigned int> seen = losses(lost, 7);
  EXPECT_NEAR(static_cast<double>(seen.size()), 38, 20);
  EXPECT_EQ(losses(lost, 7), seen);
  EXPECT_NE(losses(lost, 8), seen);
}

TEST_F(FaultScheduleTest, AFaultThatOutlivesADeactivationGoesOnWhereItWas) {
  for (const bool across : {false, true}) {
    sim::Fault broken{sim::FaultKind::wireBreak, 20, 0, 0, 30};
    broken.acrossActivations = across;
    start(broken);
    run(30);
    ecrt_master_deactivate(master);
    EXPECT_EQ(masterState().slaves_responding, across ? 1U : 3U);
    domain = ecrt_master_create_domain(master);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    cycle = 0;
    run(18);
    EXPECT_EQ(masterState().slaves_responding, across ? 1U : 3U);
    run(26);
    EXPECT_EQ(masterState().slaves_responding, across ? 3U : 1U);
  }
}

} // namespace
