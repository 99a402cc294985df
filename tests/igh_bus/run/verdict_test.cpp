// What is said of a run at its end, and what makes it a failure.
#include "run/Verdict.h"

#include "../../scenario/SteppedClock.h"
#include "Application.h"
#include "Program.h"

#include <ethercat_simulation/Simulation.h>
#include <filesystem>

using namespace igh_bus;

namespace {

TEST(Verdict, CountsAreToldAndOnlyLimitsMakeThemAFailure) {
  RunFacts good;
  std::tie(good.states, good.seenOp) = std::tuple(8, true);
  RunFacts poor = good;
  std::tie(poor.latestNs, poor.missed, poor.errors.total[1], poor.errors.total[2]) =
      std::tuple(2000, 3, 4, 1);
  RunFacts low = poor;
  std::tie(low.states, low.troubles) = std::tuple(12, "slave 1 (Y): SAFEOP");
  RunFacts ended = low;
  ended.bySignal = true;
  RunFacts dark = poor;
  dark.states = 0;
  RunFacts pulled = dark;
  std::tie(pulled.errors.streak[2], pulled.errors.lastCycle[2], pulled.errors.cycle) = std::tuple(3, 8, 9);
  RunFacts bare = poor; // without process data, error 1 says nothing
  bare.processData = false;
  const char* const five = "5 errors (working counter incomplete 4, link down 1)";
  const std::string fallen = "the bus left OP; it ended in SAFEOP+OP; slave 1 (Y): SAFEOP; ";
  const std::string many = std::string(five) + ", allowed are ";
  const std::tuple<const RunFacts&, Limits, bool, std::string> cases[] = {
      {good, {true, 0, 1000, 0}, true, "in OP at the end, with no errors"},
      {poor, {}, true, std::string("in OP at the end, with ") + five},
      {poor, {false, 5, 2000, 3}, true, std::string("in OP at the end, with ") + five},
      {poor, {true, 5, {}, 3}, true, std::string("in OP at the end, with ") + five},
      {poor, {false, 4, {}, {}}, false, many + "4"},
      {poor, {false, {}, 1999, {}}, false, "a wake-up was 2.0 us late, allowed are 1.999 us"},
      {poor, {false, {}, {}, 2}, false, "3 cycles missed, allowed are 2"},
      {poor, {true, {}, {}, {}}, false, many + "0; 3 cycles missed, allowed are 0"},
      {low, {false, 4, {}, {}}, false, fallen + many + "4"},
      {low, {false, {}, {}, 2}, false, fallen + "3 cycles missed, allowed are 2; " + five},
      {dark, {}, false, std::string("the bus left OP; at the end no slave answered; ") + five},
      {pulled, {}, false, std::string("the bus left OP; at the end the link was down; ") + five},
      {ended, {}, true, std::string("ended by a signal, in SAFEOP+OP at the end, with ") + five},
      {ended, {false, 4, {}, {}}, false, many + "4"},
      {bare, {true, 1, {}, 3}, true, "in OP at the end, with 1 error (link down 1)"}};
  for (const auto& [facts, limits, success, text] : cases) {
    const auto verdict = judge(facts, limits);
    EXPECT_EQ(verdict.text, text);
    EXPECT_EQ(verdict.success, success) << text;
    EXPECT_EQ(verdict.errors, &facts == &good ? 0U : &facts == &bare ? 1U : 5U) << text;
  }
}

TEST(Verdict, ARunSaysWhetherItWasARealTimeOneAndIsRefusedOrFailsWhereItWasToBe) {
  const char* const noPriority = "Not a real-time run: no --priority\n";
  const auto run = "run --period 2ms --cycles 5001" + onMachine;
  const std::tuple<std::string, int, std::string, std::string> cases[] = {
      {"", 0, noPriority,
       "\ncycle 5000 of 5001  OP  errors 0\n5001 cycles.*\nVerdict: in OP at the end, with no errors\n" +
           std::string(noPriority)},
      {" --max-latency 1s --max-missed 60000", 0, noPriority, noPriority},
      {" --max-missed 2", 3, noPriority, "igh_bus: [0-9]+ cycles missed, allowed are 2\n"},
      {" --max-latency 999us", 3, noPriority, "igh_bus: a wake-up was 2000.0 us late, allowed are 999 us\n"},
      {" --strict", 2, "", "igh_bus: --strict needs --priority[^\n]*\n"},
      {" --cpu 1023", 0, "Not a real-time run: the processor of --cpu was refused[^\n]*; no --priority\n",
       "Not a real-time run: [^\n]*\n"},
      {" --strict --priority 1 --cpu 1023", 3, "",
       "igh_bus: --strict: [^\n]* the processor of --cpu was refused[^\n]*\n"}};
  for (const auto& [options, status, first, last] : cases) {
    ethercat_simulation::reset();
    scenario::SteppedClock clock;
    clock.receiveTakes = 3000000; // of a period of 2 ms: every cycle is late
    const auto line = run + options;
    const auto outcome =
        status == 3 && first.empty() ? ighBus(line) : runHere(line); // no priority for the test
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_THAT(outcome.out + outcome.err,
                testing::MatchesRegex(std::string(first).append(".*").append(last)))
        << options;
  }
  unsetenv("ETHERCAT_SIMULATION_BUS");
  ethercat_simulation::reset();
}

TEST(Verdict, ErrorsAreToldBySlaveWithTheirFirstAndLastCycle) {
  using namespace ethercat_simulation;
  reset();
  bus().setClimbCycles(1);
  Slave drive;
  std::tie(drive.vendorId, drive.productCode, drive.revisionNumber, drive.name) =
      std::tuple(0x0B0B, 0x500, 0x20001, "X <left>");
  bus().addSlave(drive);
  bus().addSlave(drive);
  bus().setMaximumState(1, 2);
  const auto folder = scratch("slave_errors");
  std::remove(folder.c_str());
  scenario::SteppedClock clock;
  const auto outcome = runHere("run --eni @servo_drive.xml --cycles 60 --report " + folder);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.out, testing::ContainsRegex(
                               "\n  slave 1 \\(X <left>\\): slave refused [^\n]*, [0-9]+ from cycle [1-9] to "
                               "59\n\nCycles left out"));
  EXPECT_THAT(readFile(folder + "/report.html"),
              testing::ContainsRegex(
                  "<th scope=\"row\">slave 1 \\(X &lt;left&gt;\\)</th><td>slave refused [^/]*/td><td "
                  "class=\"n\">[0-9]+</td><td class=\"n\">[1-9][0-9]*</td><td class=\"n\">59</td>"));
  std::filesystem::remove_all(folder);
  reset();
}

} // namespace
