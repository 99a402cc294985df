// The rhythm of the cycles, and what doctor makes of a machine.
#include "host/Doctor.h"
#include "host/RealTime.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace igh_bus;

namespace {

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
