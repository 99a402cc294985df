#include "Fixture.h"
#include "SteppedClock.h"

#include <cerrno>
#include <cstdlib>

using namespace scenario;

constexpr std::int64_t PERIOD = 1000000;

class ClockTest : public Scenario {
protected:
  void begin(bool follow, bool exchangeMode, const ethercat_simulation::ReferenceClock& reference) {
    build({clocked}, {0, PERIOD, true, follow, exchangeMode});
    bus().setReferenceClock(reference);
    bringUp();
  }
  // Every other wake-up comes 200 us too early.
  void tick(unsigned int cycles = 1) {
    for (; cycles > 0; --cycles) {
      m_early = !m_early;
      m_wakeUp += m_early ? PERIOD - 200000 : PERIOD + 200000;
      clock.now = m_wakeUp;
      igh_master_exchange(0, nullptr, nullptr);
    }
  }
  static std::int64_t offset() {
    std::uint64_t offset = 0;
    igh_master_get_system_base_offset(0, &offset);
    return static_cast<std::int64_t>(offset);
  }
  // Of master and reference time, as the difference of both and not of their phases.
  std::int64_t rawDifference() const {
    const std::int64_t master = clock.now - SteppedClock::FROM_1970_TO_2000 - offset();
    return master - static_cast<std::int64_t>(bus().referenceTime());
  }
  SteppedClock clock;

private:
  bool m_early = false;
  std::int64_t m_wakeUp = clock.now;
};

// The way of a negative difference to 0 is as long as the difference, so these are small; DcControllerTest
// has the long way.
TEST_F(ClockTest, TheMasterLocksToAFastReferenceAndStaysInBothExchangeModes) {
  for (const bool exchangeMode : {false, true}) {
    const std::int64_t target = exchangeMode ? 2 * PERIOD : 0;
    bus().setClockOffsetCycles(30);
    begin(true, exchangeMode, {20000 - target, 50, 20});
    tick(90000);
    for (int i = 0; i < 5000; ++i) {
      tick();
      ASSERT_LE(std::abs(rawDifference() - target), 500) << exchangeMode << " " << i;
    }
    startOver();
  }
}

TEST_F(ClockTest, AFailedReadingCountsAsZeroAndNotAsTheLastOne) {
  begin(true, false, {20, 0, 0});
  tick(10000);
  EXPECT_LT(std::abs(offset()), 100000);
  for (int i = 0; i < 3000; ++i) {
    bus().failNext(Call::referenceClockTime, -EIO);
    tick();
  }
  EXPECT_GT(std::abs(offset()), 500000);
}

TEST_F(ClockTest, AnActivationLetsTheSlavesSettleAndADeactivationKeepsNeitherStatesNorClock) {
  begin(true, false, {3000, 0, 0});
  for (const bool again : {false, true}) {
    int settling = 0;
    for (int left = 300; left > 0 && offset() == 0; --left) {
      tick();
      settling += stateOf() == 4 || stateOf() == 8 ? 1 : 0;
    }
    EXPECT_EQ(settling, 102); // 100 cycles, the first difference, the first step
    if (!again) {
      bus().failNext(Call::createDomain);
      capture([] { EXPECT_FALSE(igh_master_active(0)); });
      EXPECT_TRUE(stateOf() == 0 && offset() == 0);
      bringUp();
    }
  }
  bus().setTracing(true);
  tick(10);
  EXPECT_EQ(offset(), -11); // however irregular the wake-ups are
  EXPECT_THAT(calls(), testing::EndsWith("domain_queue master_application_time master_reference_clock_time "
                                         "master_sync_slave_clocks master_send"));
}
