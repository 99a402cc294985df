#include "Fixture.h"

#include <algorithm>

using namespace scenario;

TEST_F(Scenario, FaultsOfTheFrameAreReportedWhileTheyLast) {
  const auto lastError = [] {
    int error = -1;
    EXPECT_TRUE(igh_master_get_last_error(0, &error));
    return error;
  };
  start({byteIo, byteIo});
  bus().setLinkUp(false);
  cycle(3);
  EXPECT_EQ(errorsOf(2), "0/*/2 0/*/2");
  bus().setLinkUp(true);
  cycle();
  errors.clear();
  cycleUntil(8);
  EXPECT_EQ(errors, ""); // nothing during the climb
  EXPECT_TRUE(igh_master_clear_error(0));
  EXPECT_EQ(lastError(), 0);
  bus().dropFrames(1); // sent by this exchange, missed by the next
  EXPECT_EQ(errorsOf(4), "0/*/1");

  bus().setErrorFlag(1, true);
  EXPECT_EQ(errorsOf(3), "0/1/3 0/1/3 0/1/3");
  bus().failNext(Call::linkState); // the record of a failed call reads as zero: no link
  bus().failNext(Call::domainState);
  EXPECT_EQ(errorsOf(1), "0/*/1 0/1/3 0/*/2");
  EXPECT_EQ(lastError(), 2); // the last one reported
  bus().failNext(Call::configState, 0, 1);
  EXPECT_EQ(errorsOf(1), "");
  bus().failNext(Call::masterState);
  cycleWith([] { ADD_FAILURE() << "callback without a known state"; });

  EXPECT_TRUE(igh_master_set_error_callback(0, nullptr, nullptr));
  EXPECT_EQ(errorsOf(1), "");
  EXPECT_EQ(lastError(), 3);
  quietly([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_EQ(lastError(), 0);
}

TEST_F(Scenario, ChangedNumberOfSlavesIsReportedOnceWhenTheRescanEnds) {
  startInOp({byteIo, byteIo});
  const auto changes = [&] { // how often error 4 and error 5
    const std::string all = errorsOf(30);
    return std::count(all.begin(), all.end(), '4') * 10 + std::count(all.begin(), all.end(), '5');
  };
  bus().insertSlave(1, slaveOf(byteIo));
  EXPECT_EQ(changes(), 10);
  bus().removeSlave(0); // as many as at the scan again
  EXPECT_EQ(changes(), 0);
  bus().removeSlave(0);
  EXPECT_EQ(changes(), 1);
  bus().insertSlave(1, slaveOf(byteIo));
  bus().insertSlave(1, slaveOf(byteIo));
  cycle(3);
  quietly([] { EXPECT_TRUE(igh_master_active(0)); });
  EXPECT_EQ(changes(), 0); // a rescan that is still on at a re-activation is none of its errors
}
