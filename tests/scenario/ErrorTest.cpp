#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, FaultsAreReportedInTheOrderOfTheCycle) {
  startInOp({byteIo, byteIo});
  EXPECT_EQ(errors, ""); // nothing during the climb
  bus().dropFrames(1);   // sent by this exchange, missed by the next
  EXPECT_EQ(errorsOf(4), "0/*/1");
  bus().setErrorFlag(1, true);
  bus().failNext(Call::linkState); // the record of a failed call reads as zero: no link
  bus().failNext(Call::domainState);
  EXPECT_EQ(errorsOf(1), "0/*/1 0/1/3 0/*/2");
  bus().failNext(Call::masterState);
  cycleWith([] { ADD_FAILURE() << "callback without a known state"; });
  quietly([] { EXPECT_TRUE(igh_master_active(0)); });
  int error = -1;
  EXPECT_TRUE(igh_master_get_last_error(0, &error));
  EXPECT_EQ(error, 0);
}
