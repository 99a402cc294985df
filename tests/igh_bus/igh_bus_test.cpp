#include "Program.h"

#include <csignal>
#include <sys/stat.h>

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

const char badDescription[] = R"(<EtherCATInfo Version="1"><Vendor><Id>#x0C0C</Id><Name>Odd</Name></Vendor>
<Descriptions><Devices><Device><Type ProductCode="#x1" RevisionNo="#x2">ODD1</Type>
<HideType RevisionNo="#x3"/><HideType RevisionNo="#x1"/>
<RxPdo Fixed="true" Sm="2"><Index>#x1600</Index><Exclude>#x1601</Exclude>
 <Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>1</BitLen><Name>Lamp</Name><DataType>BOOL</DataType></Entry>
 <Entry><Index>#x7000</Index><SubIndex>2</SubIndex><BitLen>8</BitLen><Name>Speed</Name><DataType>USINT</DataType></Entry>
</RxPdo>
<RxPdo Fixed="1" Sm="2"><Index>#x1601</Index><Exclude>#x1600</Exclude>
 <Entry><Index>#x7001</Index><SubIndex>0</SubIndex><BitLen>8</BitLen><Name>Speed</Name><DataType>INT</DataType></Entry>
 <Entry><Index>#x7002</Index><SubIndex>0</SubIndex><BitLen>32</BitLen><Name>Long</Name><DataType>INT</DataType></Entry>
</RxPdo>
<TxPdo><Index>#x1A00</Index></TxPdo>
<Dc><OpMode><Name>DC Sync</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc>
</Device><Device><Type ProductCode="#x1" RevisionNo="#x1">ODD0</Type><HideType RevisionNo="1"/></Device>
<Device><Type ProductCode="#x2" RevisionNo="#x1">ODD2</Type>
<TxPdo Sm="3"><Index>#x1A00</Index><Entry><Index>#X6000</Index><BitLen>8</BitLen><Name>Lost</Name>
<DataType>USINT</DataType></Entry><Entry><BitLen>8</BitLen><Name>Pad</Name></Entry></TxPdo>
<Dc><OpMode><Name>DC</Name><AssignActivate>1</AssignActivate><CycleTimeSync0>9000</CycleTimeSync0></OpMode></Dc>
</Device><Device><Type ProductCode="#x3" RevisionNo="#x1">ODD3</Type><HideType RevisionNo="2"/><Dc><OpMode><Name>DC</Name>
<AssignActivate>#x300</AssignActivate><CycleTimeSync1>7</CycleTimeSync1></OpMode></Dc></Device>
<Device><Type ProductCode="#x4" RevisionNo="#x1">ODD4</Type><Dc><OpMode><Name>DC</Name></OpMode></Dc></Device></Devices></Descriptions></EtherCATInfo>)";

TEST(Describe, SaysInPlainWordsWhatCannotBeUsed) {
  const auto path = scratch("odd.xml", badDescription);
  const auto outcome = ighBus({"describe", path});
  std::remove(path.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const char* text : {"Vendor 0x00000C0C \"Odd\"",
                           "product code 0x00000001, revision 0x00000002",
                           "\"DC Sync\": assign-activate 0x0300",
                           "0x7000:02      8  USINT     out   2  0x1600  \"Speed\"",
                           "1 note    File version is 1",
                           "2 oddity  Device RxPDO has unexpected fixed value.",
                           "3 detail  Device RxPDO has no sm channel.",
                           "0 error   PDO Entry Name(Speed) conflict",
                           "type not convertible",
                           "0x7000:01  \"Lamp\": BOOL",
                           "off a byte boundary",
                           "0x7000:02  \"Speed\": starts at bit 1 of byte 0",
                           "0x7000:02  \"Speed\": hidden by 0x7001:00",
                           "0x7001:00  \"Speed\": INT moves 16 bits, the entry has 8",
                           "narrower than its bit length",
                           "0x7002:00  \"Long\": INT moves 16 bits, the entry has 32",
                           "no clock mode named \"DC\"",
                           "not used: only \"DC\" is",
                           "not used: assign-activate is 0",
                           "given SYNC0 cycle of the period shift of half the period, SYNC1 cycle 7 ns",
                           "given SYNC0 cycle 9000 ns shift 4500 ns",
                           "no description from it: 1\n",
                           "- \"ODD0\" 0x00000001 revision 0x00000001, hidden by \"ODD1\" revision "
                           "0x00000002, \"ODD0\" revision 0x00000001\n",
                           "\"ODD2\" 0x00000002 revision 0x00000001\n    - index 0, or",
                           "taken for gaps, no value moves\n        SM 3  PDO 0x1A00  \"Lost\"\n  \"ODD3\"",
                           "no sync manager: these PDOs are left out\n        TxPdo 0x1A00",
                           "SM 2  0x1600 excludes 0x1601"})
    EXPECT_THAT(outcome.out, HasSubstr(text));
}

TEST(Describe, FindsNothingToComplainAboutInTheExampleMachine) {
  const auto outcome =
      ighBus({"describe", machine("terminals.xml"), machine("modular_head.xml"), machine("servo_drive.xml")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("\"EM500\" 0x00000500 revision 0x00020001: everything can be used"));
  EXPECT_THAT(outcome.out, HasSubstr("slots: 3, increments: index 0x10, PDO 0x1"));
  EXPECT_THAT(outcome.out, HasSubstr("0x7010:01      8  USINT     out   2  0x1601  \"2nd Outputs\""));
  for (const char* complaint :
       {"not convertible", "byte boundary", "bit length", "taken twice", "exclude", "  0 error"})
    EXPECT_THAT(outcome.out, Not(HasSubstr(complaint)));
}

TEST(Describe, GoesOnBehindAFileThatDoesNotLoadAndEndsWithOne) {
  const auto broken = scratch("broken.xml", "<EtherCATInfo>\n<Vendor></EtherCATInfo>");
  const auto outcome = ighBus({"describe", "/nowhere.xml", broken, machine("coupler.xml")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err,
              HasSubstr("igh_bus: /nowhere.xml: No such file or directory\nigh_bus: " + broken + ": line 2"));
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("no process data"));
  std::remove(broken.c_str());
}

TEST(Scan, ListsSlavesWithTheirDescriptionsAndWarnsOfAliases) {
  const auto bus = scratch("bus.json", R"({"slaves": [
    {"vendor_id": "0x00000B0B", "product_code": "0x100", "revision": "0x00010000", "name": "COUPLER"},
    {"vendor_id": "0x00000B0B", "product_code": "0x200", "revision": "0x00010001", "name": "DI", "alias": 77}]})");
  const auto outcome =
      ighBus({"scan", "--eni", machine("coupler.xml"), machine("terminals.xml"), "--bus", bus});
  std::remove(bus.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, MatchesRegex("0  0:0   PREOP  \\+  COUPLER  EM100\n"
                                        "1  77:1  PREOP  \\+  DI       no description\n"
                                        "slave 1 has alias 77: .* offline\n"));
}

TEST(Run, BringsTheExampleMachineToOpAndMovesNamedValues) {
  for (const std::string mode : {"normal", "exchange"}) {
    auto words = onMachine("run", {"--cycles", "400", "--set", "5:Target position=-123456", "--set",
                                   "6:Controlword=0x0F", "--watch", "5:Position actual value", "--watch",
                                   "6:Statusword", "--watch", "4:3rd Channel 1"});
    if (mode == "exchange")
      words.emplace_back("--exchange-mode");
    const auto outcome = ighBus(words);
    EXPECT_EQ(outcome.status, 0) << mode << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("8 slaves, 8 with a description"));
    EXPECT_THAT(outcome.out, testing::ContainsRegex("cycle +[0-9]+  SAFEOP\n"));
    EXPECT_THAT(outcome.out, testing::ContainsRegex("cycle +[0-9]+  OP\n"));
    EXPECT_THAT(outcome.out, HasSubstr("5:Position actual value = -123456\n"));
    EXPECT_THAT(outcome.out, HasSubstr("6:Statusword = 15\n"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("4:3rd Channel 1 = 0\n"))); // counts frames
    EXPECT_THAT(outcome.out, Not(HasSubstr("ec_pdo_entry_reg_t")));    // the listing, only when asked for
    EXPECT_THAT(outcome.out, Not(HasSubstr("\r")));                    // no progress in a pipe
    for (const char* row : {"fastest", "last", "slowest", "Cycles left out for late wake-ups: "})
      EXPECT_THAT(outcome.out, HasSubstr(row));
  }
}

TEST(Run, SimulatesEveryDescribedDeviceOnceWithoutABusFile) {
  const auto outcome =
      ighBus({"run", "--eni", machine("terminals.xml"), machine("servo_drive.xml"), "--cycles", "100",
              "--no-dc", "--listing", "--period", "500us", "--set", "2:Output 2=-7", "--watch", "2:Input 2"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("4 slaves, 4 with a description"));
  EXPECT_THAT(outcome.out, HasSubstr("2:Input 2 = -7\n"));
  EXPECT_THAT(outcome.out, HasSubstr("const static ec_pdo_entry_reg_t domain1_regs[] = {"));
  EXPECT_THAT(outcome.out, HasSubstr("Errors\n  none\n"));
}

std::string described(const std::string& pdos, unsigned int devices = 1, const std::string& mailbox = "") {
  std::string xml = "<EtherCATInfo><Vendor><Id>3</Id></Vendor><Descriptions><Devices>";
  for (unsigned int code = 1; code <= devices; ++code)
    xml += "<Device><Type ProductCode='" + std::to_string(code) + "' RevisionNo='1'>D</Type>" + mailbox +
           pdos + "</Device>";
  return xml + "</Devices></Descriptions></EtherCATInfo>";
}

std::string pdo(const std::string& index, const std::string& syncManager, const std::string& entries) {
  return "<RxPdo Sm='" + syncManager + "' Fixed='true'>" + index + entries + "</RxPdo>";
}

TEST(Run, TakesEveryDescriptionThatLoadsAndSaysWhatTheSlaveMakesOfIt) {
  const std::string entry =
      "<Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>8</BitLen><Name>A</Name>"
      "<DataType>USINT</DataType></Entry>";
  const std::string exclusive = pdo("<Index>#x1600</Index><Exclude>#x1601</Exclude>", "2", entry) +
                                pdo("<Index>#x1601</Index>", "2", entry);
  const std::string mailbox = "<Mailbox><CoE PdoAssign='1' PdoConfig='true'/></Mailbox>";
  const struct {
    std::string xml;
    int status;
    const char* err;
  } cases[] = {
      {described(
           pdo("<Index>#x1600</Index>", "2", entry + "<Entry><Index>0</Index><BitLen>0</BitLen></Entry>")),
       0, ""},
      {described(pdo("", "2", entry)), 0, ""},
      {described(pdo("<Index>#x1600</Index>", "16", entry)), 3, "Failed to configure PDOs.\n"},
      {described(exclusive), 0, ""},
      {described(exclusive, 1, mailbox), 3,
       "EtherCAT WARNING 0-0: Failed to clear the mapping of PDO 0x1600.\n"
       "EtherCAT WARNING 0-0: Failed to clear the mapping of PDO 0x1601.\n"
       "EtherCAT WARNING 0-0: PDO configuration failed. (0x1601 refused in SM2)\n"
       "EtherCAT ERROR 0-0: Failed to set SAFEOP state, slave refused state change with AL status code "
       "0x001D.\n"},
      {described(exclusive, 255), 0, ""},
      {described(exclusive, 256), 3, "igh_bus: the bus has 256 slaves: the library drives the first 255"},
  };
  for (const auto& [xml, status, err] : cases) {
    const auto path = scratch("described.xml", xml);
    const auto scan = ighBus({"scan", "--eni", path});
    EXPECT_EQ(scan.status, 0) << scan.err;
    const auto outcome = ighBus({"run", "--eni", path, "--cycles", "60"});
    EXPECT_EQ(outcome.status, status) << xml.substr(0, 600) << outcome.err;
    EXPECT_EQ(outcome.err.rfind(err, 0), 0U) << outcome.err;
    EXPECT_EQ(outcome.err.empty(), status == 0) << outcome.err;
    std::remove(path.c_str());
  }
}

TEST(Run, EndsAsABusErrorWhenOpIsNotReached) {
  const auto early = ighBus(onMachine("run", {"--cycles", "5"}));
  EXPECT_EQ(early.status, 3);
  EXPECT_THAT(early.err, HasSubstr("never reached OP"));
  const auto bus = scratch("empty.json", R"({"slaves": []})");
  const auto empty = ighBus({"run", "--eni", machine("coupler.xml"), "--bus", bus});
  EXPECT_EQ(empty.status, 3);
  EXPECT_THAT(empty.err, HasSubstr("no slave answers"));
  std::remove(bus.c_str());
  ASSERT_EQ(mkfifo(bus.c_str(), 0600), 0); // without a writer
  const auto pipe = ighBus({"run", "--eni", machine("coupler.xml"), "--bus", bus});
  EXPECT_EQ(pipe.status, 2);
  EXPECT_THAT(pipe.err, HasSubstr("is not a regular file"));
  std::remove(bus.c_str());
}

TEST(Run, CountsErrorsByTheirKindAndToleratesThoseOfABusWithoutProcessData) {
  const auto outcome = ighBus({"run", "--eni", machine("coupler.xml"), "--cycles", "50"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, testing::ContainsRegex("working counter incomplete +[1-9][0-9]\n"));
  EXPECT_THAT(outcome.out, HasSubstr("No slave has process data"));
}

TEST(Run, FollowsAReferenceClockThatRunsFast) {
  const auto outcome =
      ighBus(onMachine("run", {"--sync-to-reference", "--period", "500us", "--cycles", "2500"}));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("following the reference clock"));
  EXPECT_THAT(outcome.out, HasSubstr("\nFirst master diff: "));
  long offset = 0;
  const auto line = outcome.out.find("  OP  clock difference ");
  ASSERT_NE(line, std::string::npos) << outcome.out;
  EXPECT_EQ(
      std::sscanf(&outcome.out[line], "  OP  clock difference %*d ns (%*d to %*d), offset %ld", &offset), 1);
  EXPECT_NE(offset, 0); // of either sign: one late wake-up at a bad moment outweighs the drift
}

TEST(Run, EndsInOrderOnASignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const auto outcome = ighBus(onMachine("run", {"--seconds", "60"}), signal);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("slowest"));
    EXPECT_THAT(outcome.out, HasSubstr("Ended by a signal.\n"));
    EXPECT_THAT(outcome.out, HasSubstr("ecrt_master_deactivate\n")); // the library was shut down
  }
}

} // namespace
