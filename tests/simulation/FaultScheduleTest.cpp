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
    for (const sim::Slave& slave : {twoWay(), second, inputOnly()}) {
      bus().addSlave(slave);
    }
    bus().setClimbCycles(1);
    bus().setScanCycles(2);
    bus().setFaultSeed(seed);
    ASSERT_TRUE(bus().addFault(fault));
    request();
    unsigned int offset = 0;
    for (const std::uint16_t position : {std::uint16_t{0}, std::uint16_t{1}}) {
      ASSERT_EQ(add(domain, position, 1, 0x7000, 1, &offset), 0);
      ASSERT_EQ(add(domain, position, 1, 0x6000, 1, &offset), 0);
    }
    ASSERT_EQ(add(domain, 2, 2, 0x6000, 1, &offset), 0);
    configurations.clear();
    for (const std::uint32_t product : {1U, 1U, 2U}) {
      const auto position = static_cast<std::uint16_t>(configurations.size());
      configurations.push_back(ecrt_master_slave_config(master, 0, position, vendor, product));
    }
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
  // What the application sees now: working counter, link and slaves, AL states, online and error flags of the
  // configurations, SDO request, reference time or error; and the error counters that are not 0.
  std::string view() {
    receive();
    const ec_master_state_t state = masterState();
    std::string text = std::to_string(counter()) + (state.link_up != 0 ? " up" : " down") +
                       std::to_string(state.slaves_responding) + " AL" + std::to_string(state.al_states) +
                       " ";
    std::string errors = " ";
    for (const ec_slave_config_t* configuration : configurations) {
      text += stateOf(configuration).online != 0 ? "1" : "0";
      errors += stateOf(configuration).error_flag != 0 ? "1" : "0";
    }
    std::uint32_t time = 0;
    const int error = ecrt_master_reference_clock_time(master, &time);
    const auto ahead = static_cast<std::int32_t>(time - static_cast<std::uint32_t>(cycle * 1'000'000ULL));
    text +=
        errors + " " + "UBSE"[ecrt_sdo_request_state(sdo)] + " " + std::to_string(error != 0 ? error : ahead);
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

  std::vector<ec_slave_config_t*> configurations;
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
      {Kind::lostFrame, 0, "0 up3 AL8 111 000 B -5 0:300=5 1:308=5 2:308=5",
       "7 up3 AL8 111 000 S 0 0:300=20 1:308=20 2:308=20"},
      {Kind::lateFrame, 0, "0 up3 AL8 111 000 B -5", "7 up3 AL8 111 000 S 0"},
      {Kind::silentSlave, 1, "4 up3 AL8 111 000 B 0 1:30D=1", "7 up3 AL8 111 000 B 0 1:30D=1"},
      {Kind::linkDown, 0, "0 down0 AL0 000 000 E -5 0:310=1", "7 up3 AL8 111 000 E 0 0:310=1"},
      {Kind::wireBreak, 0, "3 up1 AL8 100 000 E 0 0:311=1 1:310=1", "7 up3 AL8 111 000 E 0 0:311=1 1:310=1"},
      {Kind::powerOff, 1, "3 up1 AL8 100 000 E 0 0:311=1 1:310=1 1:311=1 2:310=1",
       "4 up3 AL9 111 000 E 0 0:311=1 2:310=1"},
      {Kind::alError, 1, "7 up3 AL12 111 010 E 0", "7 up3 AL8 111 000 E 0"},
      {Kind::sdoAbort, 1, "7 up3 AL8 111 000 E 0", "7 up3 AL8 111 000 E 0"},
      {Kind::sdoSilence, 1, "7 up3 AL8 111 000 B 0", "7 up3 AL8 111 000 B 0"},
      {Kind::errorCounter, 1, "7 up3 AL8 111 000 S 0 1:300=5", "7 up3 AL8 111 000 S 0 1:300=20"},
      {Kind::clockStep, 0, "7 up3 AL8 111 000 S -5000", "7 up3 AL8 111 000 S -5000"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.kind));
    sim::Fault fault;
    fault.kind = each.kind;
    fault.at = 30;
    fault.duration = 20;
    fault.slave = each.slave;
    fault.index = 0x2000;
    fault.stepNs = -5000;
    start(fault);
    run(29);
    const std::size_t before = allocations();
    run(30);
    ecrt_sdo_request_read(sdo);
    run(34);
    EXPECT_EQ(allocations(), before);
    EXPECT_EQ(view(), each.early);
    run(54);
    EXPECT_EQ(view(), each.back);
    run(100);
    EXPECT_EQ(view().substr(0, 17), "7 up3 AL8 111 000");
    EXPECT_EQ(bus().misuse().total(), 0U);
  }
}

TEST_F(FaultScheduleTest, ChancesRepeatThemselvesWithTheirSeed) {
  const auto losses = [&](const sim::Fault& fault, std::uint32_t seed) {
    start(fault, seed);
    std::vector<unsigned int> cycles;
    while (cycle < 400) {
      run(cycle + 1);
      receive();
      if (cycle > 20 && counter() == 0) {
        cycles.push_back(cycle);
      }
    }
    return cycles;
  };
  sim::Fault lost;
  EXPECT_FALSE(bus().addFault(lost)) << "never begins";
  lost.every = 90;
  lost.duration = 2;
  EXPECT_THAT(losses(lost, 1), ::testing::ElementsAre(90, 91, 180, 181, 270, 271, 360, 361));
  lost = {sim::FaultKind::lostFrame, 0, 0, 0.1};
  const std::vector<unsigned int> seen = losses(lost, 7);
  EXPECT_NEAR(static_cast<double>(seen.size()), 38, 20);
  EXPECT_EQ(losses(lost, 7), seen);
  EXPECT_NE(losses(lost, 8), seen);
}

TEST_F(FaultScheduleTest, AFaultThatOutlivesADeactivationGoesOnWhereItWas) {
  sim::Fault lost;
  lost.kind = sim::FaultKind::wireBreak;
  lost.at = 20;
  lost.duration = 30;
  for (const bool across : {false, true}) {
    lost.acrossActivations = across;
    start(lost);
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
