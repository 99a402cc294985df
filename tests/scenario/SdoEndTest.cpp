// What becomes of a transfer that is under way when the master is deactivated.
#include "SdoFixture.h"
#include "SteppedClock.h"

using namespace scenario;

const std::string turn = " master_receive domain_process domain_queue master_send sdo_request_state";

class SdoEnd : public SdoTest {
protected:
  // A read of 0x2000:01 that was issued and has three receives to go.
  void startTransfer() {
    prepare();
    request = create(0x2000, 1, true);
    toOp();
    EXPECT_TRUE(read(request));
    for (int left = 5; left > 0 && bus().callCount(Call::sdoRead) == 0; --left) {
      cycle();
    }
  }
  std::string callsOf(const std::function<void()>& run) {
    bus().setTracing(true);
    quietly(run);
    return calls();
  }

  std::uint32_t request = 0;
  SteppedClock clock;
};

TEST_F(SdoEnd, TheBusGoesOnUntilTheTransferIsOverWhateverBecameOfItsHandle) {
  for (int way = 0; way < 4; ++way) {
    startTransfer();
    if (way == 1) {
      igh_master_destroy_sdo_request(0, request, true);
    } else if (way == 2) {
      quietly([] { igh_master_scan(0, nullptr); });
    }
    cycle();
    errors.clear();
    clock.sleeps.clear();
    EXPECT_THAT(callsOf([way] { way == 3 ? igh_master_active(0) : igh_master_uninitialize(0); }),
                testing::StartsWith("sdo_request_state" + turn + turn + " master_deactivate"))
        << way;
    EXPECT_THAT(clock.sleeps, testing::ElementsAre(1000000, 1000000));
    EXPECT_TRUE(!done[0] && values[0] == -1 && errors.empty());
    if (way == 3) { // what was armed starts over
      cycleUntil(8);
      cycle(6);
      EXPECT_TRUE(done[0] && values[0] == 1);
    }
    startOver();
  }
}

TEST_F(SdoEnd, OnlyIssuedRequestsAreLookedAtAndNothingElseIsAdded) {
  prepare();
  create(0x2000, 1, true);
  create(0x2000, 2, true);
  toOp();
  home();
  home();
  EXPECT_EQ(callsOf([] { igh_master_uninitialize(0); }),
            "sdo_request_state master_deactivate close release_master");
}

TEST_F(SdoEnd, AfterSixSecondsItIsDeactivatedAllTheSame) {
  startTransfer();
  bus().setSdoFault(0, 0x2000, 1, SdoFault::busyForEver);
  clock.sleeps.clear();
  expectPrint("ecrt_master_deactivate\necrt_release_master\n",
              "An SDO transfer does not end, the master is deactivated in the middle of it.\n",
              [] { igh_master_uninitialize(0); });
  EXPECT_EQ(clock.sleeps, std::vector<std::int64_t>(6000, 1000000));
  EXPECT_THAT(bus().misuse().lines,
              testing::ElementsAre("ecrt_master_deactivate was called while a request was busy."));
  outOfOrderExpected = 1;
}
