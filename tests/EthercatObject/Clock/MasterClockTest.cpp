#include "EthercatObject/Clock/MasterClock.h"

#include "EthercatObject/Platform.h"
#include "scenario/SteppedClock.h"

using namespace runtime_test;

namespace {

constexpr std::int64_t PERIOD = 1000000;

class MasterClock : public Platform {
protected:
  void start(CMasterClock& clock, bool anySlaveHasClock = true) {
    configure(0);
    clock.start(anySlaveHasClock);
    bus().setReferenceClock({3000, 0, 0});
    ecrt_master_activate(master);
    clock.settle();
  }
  // The offset after these cycles.
  long long tick(CMasterClock& clock, int cycles, bool exchanging = true) {
    for (; cycles > 0; --cycles) {
      time.now += PERIOD;
      ecrt_master_receive(master);
      clock.handOver(master);
      ecrt_master_send(master);
      clock.adjust(EC_AL_STATE_OP, exchanging);
    }
    return clock.systemBaseOffsetNs();
  }

  scenario::SteppedClock time;
};

TEST_F(MasterClock, ItsOffsetRestsUntilTheClocksHaveSettledAndPausesOutsideTheStates) {
  CMasterClock clock(PERIOD, true, true);
  start(clock);
  EXPECT_EQ(tick(clock, 101), 0); // the last of them finds the first difference
  EXPECT_EQ(tick(clock, 11), -11);
  EXPECT_EQ(tick(clock, 50, false), -11);
  clock.settle();
  EXPECT_EQ(tick(clock, 100), -11);
  EXPECT_EQ(tick(clock, 1), -12);
  EXPECT_EQ(textOf([&] { clock.printEnd(0); }), "");
  clock.setDebug(true);
  EXPECT_EQ(textOf([&] { clock.printEnd(0); }).substr(0, 21), "deactive: state = 0, ");
  clock.reset();
  EXPECT_EQ(clock.systemBaseOffsetNs(), 0);
}

TEST_F(MasterClock, SetsTheReferenceToItsTimeUnlessItFollowsItOrIsOff) {
  CMasterClock clock(PERIOD, true, false);
  clock.setDebug(true);
  start(clock);
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(tick(clock, 1), 0);
    ASSERT_EQ(static_cast<std::int64_t>(bus().referenceTime()), time.now - time.FROM_1970_TO_2000);
  }
  EXPECT_EQ(textOf([&] { clock.printEnd(0); }), "");
  EXPECT_EQ(bus().callCount(Call::referenceClockTime), 0U);
  ecrt_master_deactivate(master);
  CMasterClock off(PERIOD, true, true);
  start(off, false);
  tick(off, 1);
  EXPECT_TRUE(!off.isEnabled() && bus().callCount(Call::applicationTime) == 200);
}

} // namespace
