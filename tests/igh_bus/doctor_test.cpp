// What igh_bus doctor makes of a machine.
#include "Program.h"

#include "igh_bus/Doctor.h"

#include <cerrno>

namespace {

using igh_bus::Facts;
using igh_bus::Finding;

Facts readyMachine() {
  Facts facts;
  facts.headerVersion = facts.libraryVersion = 0x01050A;
  facts.device = "/dev/EtherCAT0";
  facts.ioctlMagic = 36;
  facts.lockableBytes = ~std::uint64_t{0};
  facts.rtPriority = 99;
  facts.host = {"6.1.0-rt", "PREEMPT_RT", "performance", "2-3", "tsc", "SCHED_OTHER"};
  return facts;
}

// The findings that are not ok: "!subject" for a failure, "?subject" for a warning.
std::string complaints(const Facts& facts) {
  std::string text;
  for (const Finding& finding : igh_bus::diagnose(facts)) {
    EXPECT_EQ(finding.remedy.empty(), finding.level == Finding::ok) << finding.subject;
    if (finding.level != Finding::ok)
      text += (finding.level == Finding::failure ? "!" : "?") + finding.subject;
  }
  return text;
}

TEST(Doctor, FindsWhatKeepsAMachineFromRunningABus) {
  EXPECT_EQ(complaints(readyMachine()), "");
  Facts facts = readyMachine();
  facts.libraryVersion = 0x010600;
  facts.deviceError = EACCES;
  facts.rtPriority = 0;
  EXPECT_EQ(complaints(facts), "!library release!device node?real-time priority");
  facts = readyMachine();
  facts.ioctlMagic.reset();
  facts.lockableBytes = 65536;
  facts.host = {"6.1.0", "voluntary", "unknown", "none", "hpet", ""};
  EXPECT_EQ(complaints(facts),
            "!device node?kernel?locked memory?isolated processors?frequency governor?clock source");
  facts.ioctlMagic = 99;
  EXPECT_EQ(complaints(facts).rfind("?device node", 0), 0U);
  // The module of stock 1.5.2 fits its own header only, whose version word has two numbers.
  facts = readyMachine();
  facts.ioctlMagic = 27;
  EXPECT_EQ(complaints(facts), "?device node");
  facts.headerVersion = facts.libraryVersion = 0x0105;
  EXPECT_EQ(complaints(facts), "");
  EXPECT_EQ(igh_bus::diagnose(facts)[1].text, "1.5, as the header");
}

TEST(Doctor, TellsASimulatedBuild) {
  const auto outcome = ighBus({"doctor"});
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_THAT(outcome.out,
              testing::HasSubstr("warning  platform             this build runs on the simulated master"));
  EXPECT_THAT(outcome.out, testing::HasSubstr("ok       library release      1.5.10, as the header\n"));
}

} // namespace
