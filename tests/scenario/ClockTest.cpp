// The clocks of the process stand still here and are moved on by the test, so that minutes of bus time take
// seconds and no scheduling disturbs a number.
#include "Fixture.h"

#include <cmath>
#include <iostream>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::int64_t from1970To2000 = 946684800LL * 1000000000;
std::int64_t stillTime = 0; // ns since 1970; 0: the real clocks

} // namespace

#pragma GCC visibility push(default)
extern "C" {
// They stand before the C library's own for every library of the process.
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (stillTime == 0) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  *time = {stillTime / 1000000000, static_cast<long>(stillTime % 1000000000)};
  return 0;
}
int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
  return stillTime != 0 ? 0 : static_cast<int>(syscall(SYS_clock_nanosleep, clock, flags, time, left));
}
}
#pragma GCC visibility pop

namespace scenario {
namespace {

constexpr std::int64_t period = 1000000;

class ClockTest : public Scenario {
protected:
  ClockTest() { stillTime = from1970To2000 + 123456789; }
  ~ClockTest() override {
    capture([] { igh_master_uninitialize(0); });
    stillTime = 0;
  }
  void begin(bool follow, bool exchangeMode, const ethercat_simulation::ReferenceClock& clock) {
    Device device = byteIo;
    device.extra = "<Dc><OpMode><Name>DC</Name><AssignActivate>#x0300</AssignActivate></OpMode></Dc>";
    build({device}, {0, period, true, follow});
    igh_master_set_exchange_mode(0, exchangeMode);
    bus().setReferenceClock(clock);
    bringUp();
  }
  // Every other wake-up comes 200 us too early.
  void tick(unsigned int cycles = 1) {
    for (; cycles > 0; --cycles) {
      m_early = !m_early;
      stillTime += m_early ? period - 200000 : period + 200000;
      igh_master_exchange(0, nullptr, nullptr);
    }
  }
  static std::int64_t offset() {
    std::uint64_t offset = 0;
    igh_master_get_system_base_offset(0, &offset);
    return static_cast<std::int64_t>(offset);
  }
  // Of master and reference time, in the middle period.
  static std::int64_t difference() {
    const std::int64_t master = stillTime - from1970To2000 - offset();
    return std::lround(std::remainder(
        static_cast<double>(master - static_cast<std::int64_t>(bus().referenceTime())), period));
  }

private:
  bool m_early = false;
};

TEST_F(ClockTest, TheMasterLocksToAFastReferenceAndStaysInBothExchangeModes) {
  for (const bool exchangeMode : {false, true}) {
    ethercat_simulation::reset();
    bus().setClockOffsetCycles(30);
    begin(true, exchangeMode, {10000000, 50, 20});
    unsigned int cycles = 0;
    for (unsigned int within = 0; within < 10000 && cycles < 300000; ++cycles) {
      bus().dropFrames(cycles == 5000 ? 1 : 0); // one reading fails
      tick();
      within = std::abs(difference()) <= period / 100 && cycles > 1000 ? within + 1 : 0;
    }
    ASSERT_LT(cycles, 300000U) << difference();
    RecordProperty(exchangeMode ? "cycles_to_lock_exchange_mode" : "cycles_to_lock",
                   static_cast<int>(cycles - 10000));
    std::cout << (exchangeMode ? "exchange" : "normal") << " mode: locked after " << cycles - 10000
              << " cycles, offset " << offset() << " ns\n";
    EXPECT_NE(offset(), 0);
    capture([] { igh_master_uninitialize(0); });
  }
}

TEST_F(ClockTest, TheOffsetRestsUntilTheSlavesHaveSettledAndPausesOutsideTheirStates) {
  begin(true, false, {3000, 0, 0});
  unsigned int settling = 0;
  for (int left = 300; left > 0 && offset() == 0; --left) {
    tick();
    std::uint32_t state = 0;
    igh_master_get_state(0, &state);
    settling += state == 4 || state == 8 ? 1 : 0;
  }
  EXPECT_EQ(settling, 102U); // 100 cycles, the first difference, the first step
  tick(10);
  EXPECT_EQ(offset(), -11); // however irregular the wake-ups are
  bus().setMaximumState(0, 2);
  tick(3);
  const std::int64_t paused = offset();
  tick(50);
  EXPECT_EQ(offset(), paused);
}

TEST_F(ClockTest, TheOtherPolicySetsTheReferenceToTheMasterInEveryCycle) {
  begin(false, false, {10000000, 50, 0});
  tick(50);
  bus().setTracing(true);
  for (int i = 0; i < 500; ++i) {
    tick();
    ASSERT_EQ(static_cast<std::int64_t>(bus().referenceTime()), stillTime - from1970To2000) << i;
  }
  EXPECT_EQ(offset(), 0);
  EXPECT_THAT(calls(), testing::HasSubstr("domain_queue master_application_time master_sync_reference_clock "
                                          "master_sync_slave_clocks master_send"));
  EXPECT_EQ(callTexts(Call::referenceClockTime), "");
  igh_master_uninitialize(0);
  ethercat_simulation::reset();
  begin(true, false, {0, 0, 0});
  bus().setTracing(true);
  tick();
  EXPECT_THAT(
      calls(),
      testing::HasSubstr(
          "master_application_time master_reference_clock_time master_sync_slave_clocks master_send"));
  EXPECT_EQ(callTexts(Call::syncReferenceClock), "");
}

} // namespace
} // namespace scenario
