// Parts of the program that need no bus: what it counts while it cycles, and what doctor makes of a machine.
#include "bus/ErrorCounts.h"
#include "host/Doctor.h"
#include "host/RealTime.h"
#include "report/Recording.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

using namespace igh_bus;

namespace {

TEST(ErrorCounts, AnErrorLastsWhenTheLastCyclesAllRaisedIt) {
  ErrorCounts errors;
  const auto cycle = [&](int times) {
    for (int i = 0; i < times; ++i)
      errors.count(3); // one for each slave in error
    ++errors.cycle;
  };
  for (const int times : {1, 1, 1, 0, 2, 2})
    cycle(times);
  EXPECT_EQ(errors.total[3], 7U);
  EXPECT_FALSE(errors.lasting(3, 3)); // interrupted in the fourth cycle
  EXPECT_TRUE(errors.lasting(3, 2));
  cycle(1);
  EXPECT_TRUE(errors.lasting(3, 3));
  cycle(0);
  EXPECT_FALSE(errors.lasting(3, 1));
  EXPECT_FALSE(errors.lasting(1, 1));
}

TEST(Pacemaker, LeavesMissedPeriodsOutAndStaysOnItsGrid) {
  using namespace std::chrono;
  const auto start = steady_clock::now();
  Pacemaker pacemaker(2000000);
  std::this_thread::sleep_for(milliseconds(9));
  EXPECT_TRUE(pacemaker.wait()); // due after 2 ms: late by three periods at least
  EXPECT_GE(pacemaker.leftOut(), 3U);
  EXPECT_GE(pacemaker.latestNs(), 7000000);
  const auto periods = static_cast<std::int64_t>(pacemaker.leftOut()) + 2; // with the two waited for
  pacemaker.shift(5000000);
  EXPECT_TRUE(pacemaker.wait());
  EXPECT_GE(steady_clock::now() - start, milliseconds(2) * periods + milliseconds(5));
}

TEST(Recording, CountsInClassesAndSpansOfFixedNumber) {
  const auto recording = std::make_unique<Recording>(1000000);
  for (int us = 1; us <= 9999; ++us)
    recording->note(us * 1000 + 999, {});
  recording->note(20000000, {});
  const auto& wakeUp = recording->histogram(Recording::wakeUp);
  EXPECT_EQ(wakeUp.percentileUs(0.5), 5000);
  EXPECT_EQ(wakeUp.percentileUs(0.9999), 9999);
  EXPECT_EQ(wakeUp.percentileUs(1), 20000);
  EXPECT_EQ(wakeUp.beyondLimit(), 9001U); // from 1000.999 us on
  EXPECT_EQ(wakeUp.beyond(), 1U);

  std::array<std::uint64_t, 6> totals{};
  for (std::uint64_t cycle = 0; cycle < 10000; ++cycle) {
    totals[1] += cycle % 3 != 0 ? 2 : 0; // two cycles of three
    totals[3] += cycle == 100 || cycle == 102 ? 1 : 0;
    recording->noteErrors(cycle, totals);
    recording->noteClock({cycle, static_cast<std::int64_t>(cycle), 0, 0, 0});
  }
  EXPECT_EQ(recording->end() - recording->begin(), 2048);
  EXPECT_EQ(recording->begin()[0].first, 1U);
  EXPECT_EQ(recording->begin()[0].last, 2U);
  EXPECT_EQ(recording->begin()[0].count, 4U);
  EXPECT_GT(recording->lostErrors(), 0U);
  EXPECT_GT(recording->clockPoints(), 1000U);
  for (std::size_t i = 1; i < recording->clockPoints(); ++i)
    EXPECT_EQ(recording->clock()[i].cycle - recording->clock()[i - 1].cycle, 8U);
}

const Host host{"6.1.0-rt", "PREEMPT_RT", "performance", "2-3", "tsc", "SCHED_OTHER"};
const Facts ready{false, 0x01050A, 0x01050A, "/dev/EtherCAT0", 0, 36, ~std::uint64_t{0}, 99, host};

// The findings that are not ok: "!subject" for a failure, "?subject" for a warning.
std::string complaints(const Facts& facts) {
  std::string text;
  for (const Finding& finding : diagnose(facts)) {
    EXPECT_EQ(finding.remedy.empty(), finding.level == Finding::ok) << finding.subject;
    if (finding.level != Finding::ok)
      text += (finding.level == Finding::failure ? "!" : "?") + finding.subject;
  }
  return text;
}

TEST(Doctor, FindsWhatKeepsAMachineFromRunningABus) {
  EXPECT_EQ(complaints(ready), "");
  Facts facts = ready;
  facts.libraryVersion = 0x010600;
  facts.deviceError = EACCES;
  facts.rtPriority = 0;
  EXPECT_EQ(complaints(facts), "!library release!device node?real-time priority");
  facts = ready;
  facts.ioctlMagic.reset();
  facts.lockableBytes = 65536;
  facts.host = {"6.1.0", "voluntary", "unknown", "none", "hpet", ""};
  EXPECT_EQ(complaints(facts),
            "!device node?kernel?locked memory?isolated processors?frequency governor?clock source");
  facts.ioctlMagic = 99;
  EXPECT_EQ(complaints(facts).rfind("?device node", 0), 0U);
  // The module of stock 1.5.2 fits its own header only, whose version word has two numbers.
  facts = ready;
  facts.ioctlMagic = 27;
  EXPECT_EQ(complaints(facts), "?device node");
  facts.headerVersion = facts.libraryVersion = 0x0105;
  EXPECT_EQ(complaints(facts), "");
  EXPECT_EQ(diagnose(facts)[1].text, "1.5, as the header");
}

} // namespace
