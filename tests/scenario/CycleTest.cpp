#include "Fixture.h"
#include "SteppedClock.h"

using namespace scenario;

TEST_F(Scenario, NormalModeSendsAtOnceAndExchangeModeReadsItsOwnFrame) {
  const std::string receive = " master_receive domain_process domain_state";
  const std::string rest =
      " slave_config_state slave_config_state master_link_state master_state domain_queue master_send";
  for (const int exchangeMode : {0, 1}) {
    startInOp({byteIo, byteIo}, {0, 1000000, false, false, exchangeMode == 1});
    const std::uint32_t out = handle(0, "Out", false);
    const std::uint32_t in = handle(1, "In", true);
    bus().setTracing(true);
    for (int i = 0; i < 6; ++i) {
      bus().setInputs(1, {static_cast<std::uint8_t>(40 + i)});
      bus().clearTrace();
      cycleWith([&] {
        EXPECT_THAT(calls(), testing::EndsWith(exchangeMode == 1 ? "domain_state" : "master_state"));
        EXPECT_TRUE(i == 0 || value(in) == 40 + i - 1 + exchangeMode);
        igh_master_pdo_send(0, out, 10 + i);
      });
      EXPECT_EQ(' ' + calls(), exchangeMode == 1 ? rest + receive : receive + rest);
      EXPECT_TRUE(i == 0 || bus().outputs(0).at(0) == 10 + i - exchangeMode);
    }
    startOver();
  }
}

TEST_F(Scenario, SafeopMovesDataAndMixedStatesSuspendItForTheWholeBus) {
  startInOp({byteIo, byteIo});
  const std::uint32_t in = handle(0, "In", true);
  const auto moves = [&](std::uint8_t pinned) { // both callback and value, or neither
    bus().setInputs(0, {pinned});
    bool called = false;
    cycle(2);
    cycleWith([&] { called = true; });
    EXPECT_EQ(value(in) == pinned, called);
    return called;
  };
  for (const std::uint8_t limit : {std::uint8_t{4}, std::uint8_t{2}}) {
    EXPECT_TRUE(moves(1));
    bus().setMaximumState(1, limit);
    bus().setResponding(1, false); // working-counter errors are suspended too
    const std::uint64_t frames = bus().framesSent();
    EXPECT_THAT(errorsOf(3), testing::Not(testing::HasSubstr("*/1")));
    bus().setResponding(1, true);
    EXPECT_FALSE(moves(9));
    EXPECT_EQ(bus().framesSent(), frames + 6);
    bus().setMaximumState(1, 8);
    cycleUntil(8);
  }
  bus().setMaximumState(0, 4);
  bus().setMaximumState(1, 4);
  cycleUntil(4);
  EXPECT_TRUE(moves(3));
  bus().dropFrames(1);
  EXPECT_THAT(errorsOf(2), testing::HasSubstr("*/1"));
}

TEST_F(Scenario, ExchangeModeWaitsByThePeriodGoesOnAfterASignalAndGivesUpInTheEnd) {
  struct Case {
    std::uint32_t period;
    std::int64_t firstWait;
    std::size_t polls;
    int latencyUs = 0; // 0: the frame is lost
  };
  for (const auto& [period, firstWait, polls, latencyUs] :
       {Case{100000, 50000, 1}, Case{239998, 119999, 1}, Case{240000, 120000, 1}, Case{340000, 120000, 2},
        Case{999999, 120000, 8}, Case{1000000, 120000, 17}, Case{1200000, 120000, 21},
        Case{1000000, 120000, 7, 400}}) {
    SteppedClock clock;
    startInOp({byteIo}, {0, period, false, false, true});
    bus().setFrameLatency(std::chrono::microseconds(latencyUs));
    bus().dropFrames(latencyUs == 0 ? 1 : 0);
    clock.sleeps.clear();
    clock.interruptions = 1;
    const std::uint64_t before = bus().callCount(Call::domainProcess);
    bool called = false;
    cycleWith([&called] { called = true; });
    EXPECT_EQ(called, latencyUs != 0);
    EXPECT_EQ(bus().callCount(Call::domainProcess) - before, polls) << period;
    std::vector<std::int64_t> sleeps(polls + 1, 50000);
    sleeps[0] = firstWait;
    sleeps[1] = firstWait - firstWait / 2; // the same sleep, resumed
    EXPECT_EQ(clock.sleeps, sleeps) << period;
    EXPECT_EQ(errors, called ? "" : "0/*/1");
    startOver();
    errors.clear();
  }
}

TEST_F(Scenario, TerminateStopsTheCycleUntilTheNextActivation) {
  startInOp({byteIo});
  EXPECT_FALSE(igh_master_is_request_terminate(0));
  EXPECT_TRUE(igh_master_request_terminate(0));
  EXPECT_TRUE(igh_master_is_request_terminate(0));
  const std::uint64_t frames = bus().framesSent();
  expectPrint("you can't call exchange function because the driver is request terminate.\n", "",
              [&] { cycle(); });
  EXPECT_EQ(bus().framesSent(), frames);
  EXPECT_EQ(lastCycle().time, frames - 1);
  quietly([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_EQ(lastCycle().time, 0U); // the records start afresh too
  cycleUntil(8);
}
