#include "Fixture.h"

namespace scenario {
namespace {

int lastError() {
  int error = -1;
  EXPECT_TRUE(igh_master_get_last_error(0, &error));
  return error;
}

TEST_F(Scenario, HealthyClimbReportsNothingAndFaultsOfTheFrameAreReportedWhileTheyLast) {
  start({byteIo, byteIo});
  cycleUntil(8);
  EXPECT_EQ(errors.take(), "");
  EXPECT_EQ(lastError(), 0);

  bus().dropFrames(1); // sent by this exchange, missed by the next
  EXPECT_EQ(errorsOf(4), "0/*/1");
  bus().setResponding(1, false);
  cycle(1);
  EXPECT_THAT(errorsOf(2), testing::HasSubstr("0/*/1"));
  bus().setResponding(1, true);
  cycleUntil(8);
  EXPECT_EQ(errorsOf(3), "");
  EXPECT_EQ(lastError(), 1);
  EXPECT_TRUE(igh_master_clear_error(0));
  EXPECT_EQ(lastError(), 0);

  bus().setErrorFlag(1, true);
  EXPECT_EQ(errorsOf(3), "0/1/3 0/1/3 0/1/3");
  bus().failNext(Call::linkState); // the record of a failed call reads as zero: no link
  bus().failNext(Call::domainState);
  EXPECT_EQ(errorsOf(1), "0/*/1 0/1/3 0/*/2");
  EXPECT_EQ(lastError(), 2); // the last one reported
  bus().failNext(Call::configState, 0, 1);
  EXPECT_EQ(errorsOf(1), "");

  bus().setErrorFlag(1, false);
  EXPECT_TRUE(igh_master_set_error_callback(0, nullptr, nullptr));
  bus().failNext(Call::linkState);
  EXPECT_EQ(errorsOf(1), "");
  EXPECT_EQ(lastError(), 2);
  capture([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_EQ(lastError(), 0);
}

TEST_F(Scenario, MasterStateThatCannotBeReadSuspendsTheExchangeForThatCycle) {
  start({byteIo});
  cycleUntil(8);
  bus().failNext(Call::masterState);
  cycleWith([] { ADD_FAILURE() << "callback without a known state"; });
  std::uint32_t state = 9;
  igh_master_get_state(0, &state);
  EXPECT_EQ(state, 0U);
  cycleUntil(8);
}

TEST_F(Scenario, MissingLinkIsReportedInEveryCycleWhateverTheState) {
  start({byteIo});
  bus().setLinkUp(false);
  cycle(3);
  EXPECT_EQ(errorsOf(3), "0/*/2 0/*/2 0/*/2");
  bus().setLinkUp(true);
  cycleUntil(8);
  EXPECT_EQ(errorsOf(3), "");
}

TEST_F(Scenario, ChangedNumberOfSlavesIsReportedOnceWhenTheRescanEnds) {
  start({byteIo, byteIo});
  cycleUntil(8);
  const auto changes = [&] {
    const std::string all = errorsOf(30) + " ";
    std::string found;
    for (const std::string change : {"0/*/4 ", "0/*/5 "}) {
      for (std::size_t at = 0; (at = all.find(change, at)) != std::string::npos; ++at) {
        found += change;
      }
    }
    return found;
  };
  bus().insertSlave(1, slaveOf(byteIo));
  EXPECT_EQ(changes(), "0/*/4 ");
  bus().removeSlave(0); // as many as at the scan again
  EXPECT_EQ(changes(), "");
  bus().removeSlave(0);
  EXPECT_EQ(changes(), "0/*/5 ");
  EXPECT_EQ(changes(), "");
}

TEST_F(Scenario, TwoMastersKeepBusesValuesAndCallbacksApart) {
  Errors second;
  start({byteIo}, {0});
  start({byteIo, byteIo}, {3});
  igh_master_set_error_callback(3, Errors::record, &second);
  const std::uint32_t first = handle(0, "Out", false, 0);
  const std::uint32_t other = handle(1, "Out", false, 3);
  igh_master_pdo_send(0, first, 1);
  igh_master_pdo_send(3, other, 2);
  cycleUntil(8, 0);
  cycleUntil(8, 3);
  EXPECT_EQ(bus(0).outputs(0), (std::vector<std::uint8_t>{1}));
  EXPECT_EQ(bus(3).outputs(0), (std::vector<std::uint8_t>{0}));
  EXPECT_EQ(bus(3).outputs(1), (std::vector<std::uint8_t>{2}));
  errors.take();
  bus(3).setErrorFlag(1, true);
  bus(0).dropFrames(1);
  cycle(2, 0);
  cycle(2, 3);
  EXPECT_EQ(errors.take(), "0/*/1");
  EXPECT_EQ(second.take(), "3/1/3 3/1/3");
  capture([] { igh_master_uninitialize(0); });
  EXPECT_EQ(value(handle(1, "In", true, 3), 3), 0.0);
  cycle(2, 3);
  EXPECT_EQ(value(handle(1, "In", true, 3), 3), 2.0);
}

} // namespace
} // namespace scenario
