// igh_bus check on buses that keep what is promised but for one thing, and whether it is found and told.
#include "../../scenario/SteppedClock.h"
#include "Terminal.h"
#include "check/Permission.h"
#include "text/Failure.h"

#include <csignal>
#include <ethercat_simulation/Simulation.h>
#include <nlohmann/json.hpp>

using namespace ethercat_simulation;
using nlohmann::json;
using testing::HasSubstr;

namespace {

constexpr const char* DESCRIPTIONS = " --eni @coupler.xml @terminals.xml @modular_head.xml @servo_drive.xml ";

struct Checked {
  int status;
  json report;
  std::string notPassed; // steps, with what was seen and the details, but for the line that nobody pulls
};

Checked checked(const std::string& options) {
  scenario::SteppedClock clock;
  const auto outcome = runHere("check --json" + options + DESCRIPTIONS);
  Checked result{outcome.status, json::parse(outcome.out, nullptr, false), outcome.err};
  if (result.report.is_discarded())
    return result;
  result.notPassed.clear();
  for (const auto& line : result.report.at("lines")) {
    if (line.at("outcome") == "passed" || line.at("seen") == "not asked for (--line-pull)")
      continue;
    result.notPassed += line.at("outcome").get<std::string>() + " " + line.at("step").get<std::string>() +
                        ": " + line.at("seen").get<std::string>() + "\n";
    for (const auto& detail : line.at("details"))
      result.notPassed += "  " + detail.get<std::string>() + "\n";
  }
  return result;
}

class Check : public testing::Test {
protected:
  void SetUp() override { reset(); }
  void TearDown() override {
    EXPECT_EQ(bus().misuse().total(), 0U) << testing::PrintToString(bus().misuse().lines);
    EXPECT_FALSE(bus().reserved());
    unsetenv("ETHERCAT_SIMULATION_BUS");
    reset();
  }
  // The example machine in a time of its own, with `changes` to its one master.
  static std::string machine(const json& changes) {
    auto file = json::parse(readFile(MACHINE_DIR "machine.json"));
    auto& master = file["masters"][0];
    master["timing"] = "fast";
    master["cycle_us"] = 1000;
    file = file.patch(changes);
    return scratch("machine.json", file.dump());
  }
};

TEST_F(Check, FindsEachFaultAndNothingElse) {
  const auto faults = [](const json& lines) {
    return json{{{"op", "add"}, {"path", "/masters/0/faults"}, {"value", lines}}};
  };
  const auto fault = [&](const json& line) { return faults(json::array({line})); };
  json jumps = json::array(); // of single cycles, there and back: no mean shows them
  for (int cycle = 1000; cycle < 40000; cycle += 1000) {
    jumps.push_back({{"kind", "clock_step"}, {"at", cycle}, {"step_ns", 200000}});
    jumps.push_back({{"kind", "clock_step"}, {"at", cycle + 1}, {"step_ns", -200000}});
  }
  const auto replace = [](const char* path, const char* value) {
    return json{{{"op", "replace"}, {"path", std::string("/masters/0/slaves/") + path}, {"value", value}}};
  };
  const std::string noOp = ": OP was not reached\n";
  struct Case {
    json changes;
    std::string options;
    std::vector<std::string> lines; // all steps that are to be told of, and words of theirs
  };
  const Case cases[] = {
      {json::array(), "", {}},
      {replace("1/revision", "0x00010001"),
       "",
       {"failed scan: 8 slaves, the master lists 8; 7 of them",
        "revision 0x00010001, serial 2, no description"}},
      {json{{{"op", "remove"}, {"path", "/masters/0/slaves/3/sync_managers/1/pdos/0/entries/1"}}},
       " --climb-limit 2",
       {"failed OP, normal mode: no lasting OP within 2.0 s; the bus is in PREOP+OP, with ",
        "slave 3 (EM300 analog): PREOP, AL status 0x001E: input configuration", "skipped exchange, n",
        "skipped working counter" + noOp, "skipped SDO 0x1018" + noOp, "skipped clocks, master leads" + noOp,
        "skipped re-activation", "skipped OP, exchange mode", "skipped exchange, exchange mode",
        "skipped OP, master follows" + noOp, "skipped clocks, master follows" + noOp}},
      {fault({{"kind", "lost_frame"}, {"at", 2500}, {"for", 2}}),
       "",
       {"failed working counter: 2000 cycles, 2000 in OP, 2000 callbacks, 2 errors (working counter "
        "incomplete 2)",
        "failed error counters: 0 of 8", "slave 0 (EM100 coupler): 0x0300 "}},
      {fault({{"kind", "error_counter"}, {"slave", 4}, {"register", "0x030D"}, {"at", 3}}),
       "",
       {"failed error counters: 7 of 8 slaves counted nothing",
        "slave 4 (EM400 modular I/O head): 0x030D 4"}},
      {replace("5/objects/3/value", "0x00020002"),
       "",
       {"failed SDO 0x1018: 1 of 2", "5 (EM500 servo drive X): vendor 0x00000B0B, product 0x00000500, "
                                     "revision 0x00020002 (scan 0x00020001), serial 0x00000006\n"}},
      {fault({{"kind", "sdo_abort"},
              {"slave", 6},
              {"index", "0x1018"},
              {"subindex", 2},
              {"at", 1},
              {"for", 100000}}),
       "",
       {"failed SDO 0x1018: 1 of 2",
        "drive Y): vendor 0x00000B0B, product not read within 2 s: slave 6 refused 0x1018:02: general error "
        "(abort 0x08000000)\n"}},
      {faults(jumps),
       "",
       {"failed clocks, master follows: not locked within 30000 cycles: the difference rests at ",
        " us with single ones of -"}},
      {json::array(),
       " --clock-bound 1us --clock-cycles 3000",
       {"failed clocks, master follows: not locked within 3000 cycles: the difference is "}},
      {json{{{"op", "remove"}, {"path", "/masters/0/reference_clock"}}},
       "",
       {"skipped clocks, master follows: the reference clock shows the master's own time"}},
      {json::array(),
       " --no-dc",
       {"skipped clocks, master leads: --no-dc", "skipped clocks, master follows: --no-dc"}},
      {json::array(),
       " --no-dc --line-pull --line-limit 2",
       {"skipped clocks", "skipped clocks", "failed line pulled: no error and no other state within 2 s"}}};
  for (const auto& [changes, options, lines] : cases) {
    reset();
    const auto file = machine(changes);
    const auto result = checked(" --cycles 2000 --bus " + file + options);
    std::remove(file.c_str());
    SCOPED_TRACE(testing::Message() << changes.dump() << options << "\n" << result.notPassed);
    EXPECT_EQ(result.status, result.notPassed.find("failed") == std::string::npos ? 0 : 3);
    std::size_t steps = 0;
    for (const auto& line : lines) {
      EXPECT_THAT(result.notPassed, HasSubstr(line));
      steps += line.rfind("failed", 0) == 0 || line.rfind("skipped", 0) == 0 ? 1 : 0;
    }
    const auto told = "\n" + result.notPassed;
    std::size_t found = 0;
    for (std::size_t at = 0; (at = told.find('\n', at)) + 1 < told.size(); ++at)
      found += told[at + 1] != ' ' ? 1 : 0;
    EXPECT_EQ(found, steps);
    for (const unsigned int slave : {2U, 3U, 5U, 6U})
      EXPECT_THAT(bus().outputs(slave), testing::Each(0));
  }
}

TEST_F(Check, WaitsForALineThatIsPulledAndPutBack) {
  const auto file =
      machine({{{"op", "add"},
                {"path", "/masters/0/faults"},
                {"value", json::array({{{"kind", "link_down"}, {"at", 6000}, {"for", 700}}})}}});
  const auto result = checked(" --cycles 500 --no-dc --line-pull --bus " + file);
  std::remove(file.c_str());
  EXPECT_EQ(result.status, 0) << result.notPassed;
  const auto& line = result.report.at("lines").back();
  EXPECT_THAT(
      line.at("seen").get<std::string>(),
      testing::MatchesRegex("trouble in cycle 60[0-9][0-9], OP again from cycle 67[0-9][0-9] on, with "
                            "[0-9]+ errors \\(.*link down 7[0-9][0-9].*then 1000 cycles with no "
                            "errors"));
}

// Calls that fail, and what no bus file says.
TEST_F(Check, FindsWhatTheMasterRefuses) {
  using Order = void (*)();
  const std::tuple<Order, const char*, const char*> cases[] = {
      {[] { bus().failNext(Call::deviceIoctl, -EIO, 8); }, "failed registers: 1 of 2 slaves",
       "  slave 0, register 0x0300: Input/output error"},
      {[] { bus().setImageNeverMapped(true); },
       "failed re-activation: the master could not be activated again", ""},
      {[] {
         bus().setRegisters(1, 0x092C, {0x40, 0x42, 0x0F, 0x80});
       },
       "failed clocks, master leads: 0 of 1 clocks, the worst reading 1000.000 us away",
       "slave 1: difference (0x092C) up to -1000.000 us, system time (0x0910) that of the master"},
      {[] { bus().failNext(Call::activate, -EIO); },
       "failed OP, normal mode: the master could not be activated",
       "skipped re-activation: OP was not reached"}};
  for (const auto& [order, failed, words] : cases) {
    reset();
    bus().setTiming(Timing::fast);
    bus().setCycleTime(std::chrono::milliseconds(1));
    Slave input;
    std::tie(input.vendorId, input.productCode, input.revisionNumber) = std::tuple(0x0B0B, 0x200, 0x10000);
    input.model = SlaveModel::counter;
    input.distributedClocks = input.coe = false;
    bus().addSlave(input);
    Slave drive;
    std::tie(drive.vendorId, drive.productCode, drive.revisionNumber) = std::tuple(0x0B0B, 0x500, 0x20001);
    drive.coe = false;
    bus().addSlave(drive);
    order();
    const auto result = checked(" --cycles 500");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.notPassed, HasSubstr(failed));
    EXPECT_THAT(result.notPassed, HasSubstr(words));
    EXPECT_EQ(result.notPassed.find("failed"), result.notPassed.rfind("failed ")) << result.notPassed;
  }
}

TEST_F(Check, EndsInOrderOnASignalAndLeavesItsReport) {
  const auto file = scratch("check.txt");
  const auto outcome = ighBus("check --report " + file + onMachine, SIGINT);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.err, HasSubstr("igh_bus: the check was ended by a signal: "));
  EXPECT_THAT(outcome.out, testing::ContainsRegex("^Check of master 0: 8 slaves \\(simulated bus\\)\nPeriod "
                                                  "1000 us.*\nskipped  line pulled\n.*\n\n[0-9]+ passed, 0 "
                                                  "failed, 1?[0-9] skipped\n$"));
  EXPECT_EQ(readFile(file), outcome.out);
  std::remove(file.c_str());
}

TEST(CheckPermission, ARealBusIsTakenOnlyWhenSomebodyAgrees) {
  Person person;
  const std::tuple<bool, bool, const char*, bool, const char*> cases[] = {
      {true, false, nullptr, true, "simulated"},      {false, true, nullptr, true, "every output at 0"},
      {false, false, nullptr, false, "brakes"},       {false, false, "yes\n", true, "go on? [yes/N]"},
      {false, false, "y\n", false, "go on? [yes/N]"}, {false, false, "\n", false, "go on? [yes/N]"}};
  for (const auto& [simulated, yes, answer, agreed, said] : cases) {
    if (answer)
      person.types(answer);
    testing::internal::CaptureStderr();
    if (agreed)
      EXPECT_NO_THROW(igh_bus::check::askPermission(simulated, yes));
    else
      EXPECT_THROW(igh_bus::check::askPermission(simulated, yes), igh_bus::Failure);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(said));
  }
}

} // namespace
