#include "Fixture.h"

namespace scenario {
namespace {

TEST_F(Scenario, CallsOfACycleComeInOrderInBothModes) {
  for (const bool exchangeMode : {false, true}) {
    ethercat_simulation::reset();
    build({byteIo, byteIo});
    igh_master_set_exchange_mode(0, exchangeMode);
    bringUp();
    cycleUntil(8);
    bus().setTracing(true);
    std::string beforeCallback;
    cycleWith([&] { beforeCallback = calls(); });
    const std::string receive = "master_receive domain_process domain_state";
    const std::string checks = "slave_config_state slave_config_state master_link_state master_state";
    const std::string send = "domain_queue master_send";
    EXPECT_EQ(calls(),
              exchangeMode ? checks + " " + send + " " + receive : receive + " " + checks + " " + send);
    EXPECT_EQ(beforeCallback, exchangeMode ? calls() : receive + " " + checks);
    capture([] { igh_master_uninitialize(0); });
  }
}

TEST_F(Scenario, BelowSafeopTheFrameGoesOutButNothingIsCopiedCalledOrReported) {
  bus().setClimbCycles(3);
  start({byteIo});
  const std::uint32_t in = handle(0, "In", true);
  igh_master_pdo_send(0, handle(0, "Out", false), 0x5A); // written before activation's first frame
  bus().setInputs(0, {0x77});
  std::string seen;
  for (int i = 0; i < 40; ++i) {
    const std::uint64_t frames = bus().framesSent();
    bool called = false;
    cycleWith([&] { called = true; });
    std::uint32_t state = 0;
    EXPECT_TRUE(igh_master_get_state(0, &state));
    EXPECT_EQ(called, state == 4 || state == 8);
    EXPECT_EQ(bus().framesSent(), frames + 1);
    EXPECT_TRUE(called || value(in) == 0.0);
    seen += seen.empty() || seen.back() != static_cast<char>('0' + state) ? std::to_string(state) : "";
  }
  EXPECT_EQ(seen, "21248");
  EXPECT_EQ(value(in), 0x77);
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{0x5A}));
  EXPECT_EQ(errors.take().find("/2"), std::string::npos);
}

TEST_F(Scenario, SafeopMovesDataAndMixedStatesSuspendItForTheWholeBus) {
  start({byteIo, byteIo});
  const std::uint32_t in = handle(0, "In", true);
  cycleUntil(8);
  const auto inputAfter = [&](std::uint8_t pinned, unsigned int cycles) {
    bus().setInputs(0, {pinned});
    bool called = false;
    for (unsigned int i = 0; i < cycles; ++i) {
      called = false;
      cycleWith([&] { called = true; });
    }
    return called ? value(in) : -value(in);
  };
  EXPECT_EQ(inputAfter(1, 2), 1.0);
  for (const std::uint8_t limit : {std::uint8_t{4}, std::uint8_t{2}}) {
    bus().setMaximumState(1, limit);
    const std::uint64_t frames = bus().framesSent();
    bus().setResponding(1, false); // working-counter errors are suspended too
    EXPECT_THAT(errorsOf(3), testing::Not(testing::HasSubstr("*/1")));
    bus().setResponding(1, true);
    EXPECT_EQ(inputAfter(9, 3), -1.0); // not called; the value stays
    EXPECT_EQ(bus().framesSent(), frames + 6);
    bus().setMaximumState(1, 8);
    cycleUntil(8);
    EXPECT_EQ(inputAfter(1, 2), 1.0);
  }
  bus().setMaximumState(0, 4);
  bus().setMaximumState(1, 4);
  cycleUntil(4);
  EXPECT_EQ(inputAfter(3, 2), 3.0);
}

TEST_F(Scenario, NormalModeSendsAtOnceAndExchangeModeReadsItsOwnFrame) {
  for (const int exchangeMode : {0, 1}) {
    ethercat_simulation::reset();
    build({byteIo, byteIo});
    igh_master_set_exchange_mode(0, exchangeMode == 1);
    bringUp();
    const std::uint32_t out = handle(0, "Out", false);
    const std::uint32_t in = handle(1, "In", true);
    cycleUntil(8);
    for (int i = 0; i < 6; ++i) {
      bus().setInputs(1, {static_cast<std::uint8_t>(40 + i)});
      cycleWith([&] {
        EXPECT_TRUE(i == 0 || value(in) == 40 + i - 1 + exchangeMode);
        igh_master_pdo_send(0, out, 10 + i);
      });
      EXPECT_TRUE(i == 0 || bus().outputs(0).at(0) == 10 + i - exchangeMode);
    }
    capture([] { igh_master_uninitialize(0); });
  }
}

TEST_F(Scenario, ExchangeModePollsForALateFrameUntilItIsThere) {
  build({byteIo});
  igh_master_set_exchange_mode(0, true);
  bringUp();
  cycleUntil(8);
  bus().setFrameLatency(std::chrono::microseconds(400));
  errors.take();
  const std::uint64_t polls = bus().callCount(Call::receive);
  int called = 0;
  for (int i = 0; i < 20; ++i) {
    cycleWith([&] { ++called; });
  }
  EXPECT_EQ(called, 20);
  EXPECT_EQ(errors.take(), "");
  EXPECT_GT(bus().callCount(Call::receive) - polls, 20U);
}

// The budget is counted in polls, so these numbers do not depend on how late the sleeps end.
TEST_F(Scenario, ExchangeModeGivesUpAfterTheBudgetOfThePeriod) {
  const std::vector<std::pair<std::uint32_t, std::uint64_t>> pollsOfPeriod{
      {100000, 1}, {200000, 1}, {239999, 1},   {240000, 1},
      {340000, 2}, {999999, 8}, {1000000, 17}, {1200000, 21}};
  for (const auto& [period, polls] : pollsOfPeriod) {
    ethercat_simulation::reset();
    build({byteIo}, {0, period});
    igh_master_set_exchange_mode(0, true);
    bringUp();
    cycleUntil(8);
    bus().dropFrames(1);
    errors.take();
    const std::uint64_t before = bus().callCount(Call::domainProcess);
    cycleWith([] { ADD_FAILURE() << "callback without a frame"; });
    EXPECT_EQ(bus().callCount(Call::domainProcess) - before, polls) << period;
    EXPECT_EQ(errors.take(), "0/*/1");
    EXPECT_EQ(errorsOf(1), "");
    capture([] { igh_master_uninitialize(0); });
  }
}

TEST_F(Scenario, TerminateStopsTheCycleUntilTheNextActivation) {
  start({byteIo});
  cycleUntil(8);
  _ETHERCAT_COMM_DIAG_INFO before{};
  _ETHERCAT_COMM_DIAG_INFO after{};
  igh_master_get_comm_diag_info(0, COMM_DIAG_LAST, &before);
  EXPECT_FALSE(igh_master_is_request_terminate(0));
  EXPECT_TRUE(igh_master_request_terminate(0));
  EXPECT_TRUE(igh_master_is_request_terminate(0));
  bus().setTracing(true);
  const std::string line = "you can't call exchange function because the driver is request terminate.\n";
  EXPECT_EQ(capture([&] { cycle(2); }).out, line + line);
  EXPECT_EQ(calls(), "");
  bus().setTracing(false);
  igh_master_get_comm_diag_info(0, COMM_DIAG_LAST, &after);
  EXPECT_EQ(after.time, before.time);
  EXPECT_EQ(after.totalExchangeCostUs, before.totalExchangeCostUs);
  capture([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_FALSE(igh_master_is_request_terminate(0));
  cycleUntil(8);
}

TEST_F(Scenario, TimingRecordsStartWithTheFirstCycleAndPrintByteForByte) {
  start({byteIo});
  const auto record = [](unsigned int index) {
    _ETHERCAT_COMM_DIAG_INFO info{77, 1, 2, 3, 4, 5};
    EXPECT_TRUE(igh_master_get_comm_diag_info(0, index, &info));
    return std::array<std::uint64_t, 2>{info.time, static_cast<std::uint64_t>(info.totalExchangeCostUs)};
  };
  cycle(1);
  const std::array<std::uint64_t, 2> first = record(COMM_DIAG_LAST);
  EXPECT_EQ(first[0], 0U);
  EXPECT_EQ(record(COMM_DIAG_MIN), first);
  EXPECT_EQ(record(COMM_DIAG_MAX), first);
  cycle(6);
  EXPECT_EQ(record(COMM_DIAG_LAST)[0], 6U);
  EXPECT_EQ(record(3), (std::array<std::uint64_t, 2>{77, 5}));
  EXPECT_TRUE(igh_master_get_comm_diag_info(0, COMM_DIAG_MIN, nullptr));

  _ETHERCAT_COMM_DIAG_INFO shown{1234567890123, 10, -1, 12, 13, 14};
  const std::string body =
      "    Time = 1234567890123\n    TxPDO received cost(us) = 10\n    SDO cost(us) = -1\n"
      "    RxPDO sent cost(us) = 12\n    User callback cost(us) = 13\n"
      "    Total exchange cost(us) = 14\n";
  const Printed printed = capture([&] {
    EXPECT_TRUE(igh_master_output_comm_diag_info(0, "Slowest", &shown));
    EXPECT_TRUE(igh_master_output_comm_diag_info(0, nullptr, &shown));
    EXPECT_TRUE(igh_master_output_comm_diag_info(0, "Nothing", nullptr));
  });
  EXPECT_EQ(printed.out, "\nSlowest:\n" + body + "\nCommunication detail:\n" + body);
}

} // namespace
} // namespace scenario
