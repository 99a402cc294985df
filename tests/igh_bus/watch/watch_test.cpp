// igh_bus watch as somebody at a terminal sees it.
#include "Terminal.h"

#include <csignal>

using testing::HasSubstr;

namespace {

const std::string PROGRAM = "'" IGH_BUS_PROGRAM "' ";
const char* const DESCRIBED = " --eni @coupler.xml @terminals.xml @modular_head.xml @servo_drive.xml";

TEST(Watch, ShowsSlavesErrorsAndValuesLiveAndFollowsKeysAndSize) {
  const char* const fault = R"("faults": [{"kind": "al_error", "slave": 5, "at": 300, "for": 1000000000}], )";
  auto bus = readFile(MACHINE_DIR "machine.json");
  bus.insert(bus.find("\"slaves\""), fault);
  const auto file = scratch("watch.json", bus);
  Terminal terminal(PROGRAM + "watch --set '5:Target position=4711' --bus " + file + DESCRIBED, "linux", 14);
  const auto seen =
      terminal.until("slave refused a state or stopped answering [^]*5\\s+SAFEOP \\+ ERROR\\s+[1-9][0-9]*\\s+"
                     "EM500 servo drive X\\s+SAFEOP, AL status 0x001B: [a-z]");
  EXPECT_THAT(seen, testing::ContainsRegex("Latency .* us in the last second, worst .*not real-time"));
  EXPECT_THAT(seen, testing::Not(HasSubstr("Target position"))); // there is no room for it
  terminal.type("s");
  terminal.until("STATUS\\s+5\\s+SAFEOP");
  terminal.type("\033[6~\033[6~\033[B\033[B");
  terminal.until("VALUE[^]*5\\s+Target position\\s+4711 ");
  terminal.type("\033[[A"); // F1
  terminal.until("keys[^]*hold the picture");
  terminal.type("h");
  terminal.resize(60);
  terminal.until("EM100 coupler[^]*7\\s+Inputs 9-16");
  terminal.type("q");
  const auto outcome = terminal.end();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(terminal.restored());
  EXPECT_THAT(outcome.out, HasSubstr("\r\nVerdict: ended by a key, in "));
  std::remove(file.c_str());
}

TEST(Watch, LeavesTheTerminalAsItWasHoweverItEnds) {
  const auto xml = scratch(
      "watch.xml", "<EtherCATInfo><Vendor><Id>3</Id></Vendor><Descriptions><Devices><Device><Type "
                   "ProductCode='1' RevisionNo='1'>D</Type><RxPdo Sm='16'><Index>#x1600</Index><Entry>"
                   "<Index>#x7000</Index><BitLen>8</BitLen><Name>A</Name></Entry></RxPdo></Device>"
                   "</Devices></Descriptions></EtherCATInfo>");
  const std::string machine = std::string(" --bus @machine.json") + DESCRIBED;
  const std::tuple<std::string, const char*, std::string, int, const char*> cases[] = {
      {machine, "xterm", "\033[21~", 0, "Verdict: ended by a key"}, // F10
      {machine, "vt100", "SIGTERM", 0, "Verdict: ended by a signal"},
      {machine + " --seconds 0.5 --max-latency 1ns", "xterm", "", 3, "allowed are 0.001 us"},
      {" --eni " + xml, "xterm", "", 3, "Failed to configure PDOs."}, // of the library, kept for the end
      {machine, "nonsense", "", 2, "cannot draw on a terminal of the type 'nonsense'"}};
  for (const auto& [arguments, type, keys, status, text] : cases) {
    Terminal terminal(PROGRAM + "watch" + arguments, type, 24);
    if (status == 0)
      terminal.until("States\\s+OP");
    keys == "SIGTERM" ? terminal.signal(SIGTERM) : terminal.type(keys);
    const auto outcome = terminal.end();
    EXPECT_EQ(outcome.status, status) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr(text));
    EXPECT_TRUE(terminal.restored()) << text;
  }
  std::remove(xml.c_str());
  const auto none = ighBus("watch" + machine);
  EXPECT_EQ(none.status, 2);
  EXPECT_THAT(none.err, HasSubstr("watch needs a terminal"));
}

} // namespace
