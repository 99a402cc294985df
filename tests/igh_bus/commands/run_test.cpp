#include "Program.h"

#include <csignal>

using testing::ContainsRegex;

namespace {

TEST(Run, MovesNamedValuesAndShowsWhatCameOfIt) {
  const std::string moved = "run --cycles 400 --set '5:Target position=-123456' --set 6:Controlword=0x0F " +
                            onMachine +
                            " --watch '5:Position actual value' --watch 6:Statusword "
                            "--watch '4:3rd Channel 1'"; // that one counts frames
  const char* const seen = "cycle +[0-9]+  SAFEOP\n.*cycle +[0-9]+  OP\n.*5:Position actual value = -123456\n"
                           "  6:Statusword = 15\n  4:3rd Channel 1 = -?[1-9]";
  const std::pair<std::string, const char*> cases[] = {
      {moved, seen},
      {moved + " --exchange-mode", seen},
      // Without a bus file every described device is simulated once.
      {"run --eni @terminals.xml @servo_drive.xml --cycles 100 --no-dc --listing --period 500us --set "
       "'2:Output 2=-7' --watch '2:Input 2'",
       "const static ec_pdo_entry_reg_t domain1_regs.*2:Input 2 = -7\n"},
      {"run --eni @coupler.xml --cycles 50 --histogram",
       "working counter incomplete +[1-9][0-9]\n.*\n# Histogram\n0[0-9]+ 0[0-9]+\n.*\n# Total: 000000050\n"
       ".*No slave has process data"},
      // An offset of either sign: one late wake-up at a bad moment outweighs the drift.
      {"run --sync-to-reference --period 500us --cycles 2500" + onMachine,
       "following the reference clock.*\nFirst master diff: .*  OP  clock difference [^,]*\\), offset "
       "[+-]?[1-9]"},
      {"diag --seconds 0.4" + onMachine, "\n  fastest  [^\n]*\n  last  +399 [^\n]*\n  slowest  "},
      {"doctor", "warning  platform +this build runs on the simulated"}};
  for (const auto& [line, pattern] : cases) {
    const auto outcome = ighBus(line);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, ContainsRegex(pattern));
    EXPECT_EQ(outcome.out.find('\r'), std::string::npos); // no progress in a pipe
  }
}

TEST(Run, TakesEveryDescriptionThatLoadsAndSaysWhatTheSlaveMakesOfIt) {
  const std::string entry = "<Entry><Index>#x7000</Index><BitLen>8</BitLen><Name>A</Name></Entry></RxPdo>";
  const std::string exclusive = "<RxPdo Sm='2' Fixed='1'><Index>#x1600</Index><Exclude>#x1601</Exclude>" +
                                entry + "<RxPdo Sm='2' Fixed='1'><Index>#x1601</Index>" + entry;
  const std::string oddities =
      "<RxPdo Sm='2' Fixed='1'><Entry><Index>0</Index><BitLen>0</BitLen></Entry>" + entry;
  const std::tuple<int, std::string, int, const char*> cases[] = {
      {255, exclusive + oddities, 0, ""},
      {256, exclusive, 3, "igh_bus: the bus has 256 slaves: the library drives the first 255"},
      {1, "<RxPdo Sm='16'><Index>#x1600</Index>" + entry, 3, "Failed to configure PDOs.\n"},
      {1, "<Mailbox><CoE PdoAssign='1' PdoConfig='true'/></Mailbox>" + exclusive, 3,
       "EtherCAT WARNING 0-0: Failed to clear the mapping of PDO 0x1600.\n"
       "EtherCAT WARNING 0-0: Failed to clear the mapping of PDO 0x1601.\n"
       "EtherCAT WARNING 0-0: PDO configuration failed. (0x1601 refused in SM2)\n"
       "EtherCAT ERROR 0-0: Failed to set SAFEOP state, slave refused state change with AL status code "
       "0x001D.\n"},
  };
  for (const auto& [devices, content, status, err] : cases) {
    std::string xml = "<EtherCATInfo><Vendor><Id>3</Id></Vendor><Descriptions><Devices>";
    for (int code = 1; code <= devices; ++code)
      xml += "<Device><Type ProductCode='" + std::to_string(code) + "' RevisionNo='1'>D</Type>" + content +
             "</Device>";
    const auto path = scratch("described.xml", xml + "</Devices></Descriptions></EtherCATInfo>");
    EXPECT_EQ(ighBus("scan --eni " + path).status, 0) << content;
    const auto outcome = ighBus("run --cycles 60 --eni " + path);
    std::remove(path.c_str());
    EXPECT_EQ(outcome.status, status) << content << outcome.err;
    EXPECT_EQ(outcome.err.rfind(err, 0), 0U) << outcome.err;
    EXPECT_EQ(outcome.err.empty(), status == 0) << outcome.err;
  }
}

TEST(Run, EndsInOrderOnASignal) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto outcome = ighBus("run --seconds 60" + onMachine, signal);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, ContainsRegex("ecrt_master_deactivate\n.*Verdict: ended by a signal, in "));
  }
}

} // namespace
