#include "Program.h"

#include <csignal>

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

const char badDescription[] =
    R"(<EtherCATInfo Version="1"><Vendor><Id>#x0C0C</Id></Vendor><Descriptions><Devices>
<Device><Type ProductCode="#x1" RevisionNo="#x2">ODD1</Type><HideType RevisionNo="#x3"/><HideType RevisionNo="#x1"/>
<RxPdo Fixed="true" Sm="2"><Index>#x1600</Index><Exclude>#x1601</Exclude>
 <Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>1</BitLen><Name>Lamp</Name><DataType>BOOL</DataType></Entry>
 <Entry><Index>#x7000</Index><SubIndex>2</SubIndex><BitLen>8</BitLen><Name>Speed</Name><DataType>USINT</DataType></Entry>
</RxPdo><RxPdo Fixed="1" Sm="2"><Index>#x1601</Index><Exclude>#x1600</Exclude>
 <Entry><Index>#x7001</Index><BitLen>8</BitLen><Name>Speed</Name><DataType>INT</DataType></Entry>
 <Entry><Index>#x7002</Index><BitLen>32</BitLen><Name>Long</Name><DataType>INT</DataType></Entry>
</RxPdo><TxPdo><Index>#x1A00</Index></TxPdo>
<Dc><OpMode><Name>DC Sync</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc></Device>
<Device><Type ProductCode="#x1" RevisionNo="#x1">ODD0</Type><HideType RevisionNo="1"/></Device>
<Device><Type ProductCode="#x2" RevisionNo="#x1">ODD2</Type><TxPdo Sm="3"><Index>#x1A00</Index>
 <Entry><Index>#X6000</Index><BitLen>8</BitLen><Name>Lost</Name><DataType>USINT</DataType></Entry></TxPdo>
<Dc><OpMode><Name>DC</Name><AssignActivate>1</AssignActivate><CycleTimeSync0>9000</CycleTimeSync0></OpMode></Dc></Device>
<Device><Type ProductCode="#x3" RevisionNo="#x1">ODD3</Type><HideType RevisionNo="2"/>
<Dc><OpMode><Name>DC</Name><AssignActivate>1</AssignActivate><CycleTimeSync1>7</CycleTimeSync1></OpMode></Dc></Device>
<Device><Type ProductCode="#x4" RevisionNo="#x1">ODD4</Type><Dc><OpMode><Name>DC</Name></OpMode></Dc></Device>
</Devices></Descriptions></EtherCATInfo>)";

TEST(Describe, SaysInPlainWordsWhatCannotBeUsed) {
  const auto path = scratch("odd.xml", badDescription);
  const auto outcome = ighBus("describe " + path);
  std::remove(path.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const char* text :
       {"\"DC Sync\": assign-activate 0x0300", "3 detail  Device RxPDO has no sm channel.",
        "0 error   PDO Entry Name(Speed) conflict", "0x7000:01  \"Lamp\": BOOL",
        "0x7000:02  \"Speed\": starts at bit 1 of byte 0", "0x7000:02  \"Speed\": hidden by 0x7001:00",
        "0x7001:00  \"Speed\": INT moves 16 bits, the entry has 8", "narrower than its bit length",
        "no clock mode named \"DC\"", "not used: only \"DC\" is", "not used: assign-activate is 0",
        "given SYNC0 cycle of the period shift of half the period, SYNC1 cycle 7 ns",
        "given SYNC0 cycle 9000 ns shift 4500 ns",
        "no description from it: 1\n    - \"ODD0\" 0x00000001 revision 0x00000001, "
        "hidden by \"ODD1\" revision 0x00000002, \"ODD0\" revision 0x00000001\n",
        "\"ODD2\" 0x00000002 revision 0x00000001\n    - index 0, or",
        "taken for gaps, no value moves\n        SM 3  PDO 0x1A00  \"Lost\"\n  \"ODD3\"",
        "no sync manager: these PDOs are left out\n        TxPdo 0x1A00", "SM 2  0x1600 excludes 0x1601"})
    EXPECT_THAT(outcome.out, HasSubstr(text));
}

TEST(Describe, GoesOnBehindAFileThatDoesNotLoadAndFindsNothingToComplainAboutInGoodOnes) {
  const auto broken = scratch("broken.xml", "<EtherCATInfo>\n<Vendor></EtherCATInfo>");
  const auto outcome = ighBus("describe /nowhere.xml " + broken + " @modular_head.xml @servo_drive.xml");
  std::remove(broken.c_str());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, MatchesRegex("igh_bus: /nowhere.xml: No such file or directory\nigh_bus: " +
                                        broken + ": line 2[^\n]*\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\"EM500\" 0x00000500 revision 0x00020001: everything can be used"));
  EXPECT_THAT(outcome.out, HasSubstr("slots: 3, increments: index 0x10, PDO 0x1"));
  EXPECT_THAT(outcome.out, HasSubstr("0x7010:01      8  USINT     out   2  0x1601  \"2nd Outputs\""));
}

TEST(Scan, ListsSlavesWithTheirDescriptionsAndWarnsOfAliases) {
  const auto bus = scratch("bus.json", R"({"slaves": [
    {"vendor_id": "0x00000B0B", "product_code": "0x100", "revision": "0x00010000", "name": "COUPLER"},
    {"vendor_id": "0x00000B0B", "product_code": "0x200", "revision": "0x00010001", "name": "DI", "alias": 77}]})");
  const auto outcome = ighBus("scan --eni @coupler.xml @terminals.xml --bus " + bus);
  std::remove(bus.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, MatchesRegex("0  0:0   PREOP  \\+  COUPLER  EM100\n"
                                        "1  77:1  PREOP  \\+  DI       no description\n"
                                        "slave 1 has alias 77: .* offline\n"));
}

TEST(Run, BringsTheExampleMachineToOpAndMovesNamedValues) {
  for (const std::string mode : {"", " --exchange-mode"}) {
    const auto outcome =
        ighBus("run --cycles 400 --set '5:Target position=-123456' --set 6:Controlword=0x0F" + onMachine +
               mode + " --watch '5:Position actual value' --watch 6:Statusword --watch '4:3rd Channel 1'");
    EXPECT_EQ(outcome.status, 0) << mode << outcome.err;
    EXPECT_THAT(outcome.out, ContainsRegex("cycle +[0-9]+  SAFEOP\n.*cycle +[0-9]+  OP\n"));
    EXPECT_THAT(outcome.out, HasSubstr("5:Position actual value = -123456\n  6:Statusword = 15\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("4:3rd Channel 1 = -?[1-9]")); // counts frames
    EXPECT_EQ(outcome.out.find('\r'), std::string::npos);                 // no progress in a pipe
  }
}

TEST(Run, SimulatesEveryDescribedDeviceOnceWithoutABusFile) {
  const auto outcome = ighBus("run --eni @terminals.xml @servo_drive.xml --cycles 100 --no-dc --listing "
                              "--period 500us --set '2:Output 2=-7' --watch '2:Input 2'");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("2:Input 2 = -7\n"));
  EXPECT_THAT(outcome.out, HasSubstr("const static ec_pdo_entry_reg_t domain1_regs[] = {"));
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

TEST(Run, CountsErrorsByTheirKindAndToleratesThoseOfABusWithoutProcessData) {
  const auto outcome = ighBus("run --eni @coupler.xml --cycles 50");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, ContainsRegex("working counter incomplete +[1-9][0-9]\n"));
  EXPECT_THAT(outcome.out, HasSubstr("No slave has process data"));
}

TEST(Run, FollowsAReferenceClockThatRunsFast) {
  const auto outcome = ighBus("run --sync-to-reference --period 500us --cycles 2500" + onMachine);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, ContainsRegex("following the reference clock.*\nFirst master diff: "));
  // An offset of either sign: one late wake-up at a bad moment outweighs the drift.
  EXPECT_THAT(outcome.out, ContainsRegex("  OP  clock difference [^,]*\\), offset [+-]?[1-9]"));
}

TEST(Run, EndsInOrderOnASignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const auto outcome = ighBus("run --seconds 60" + onMachine, signal);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, ContainsRegex("Ended by a signal\\.\n.*ecrt_master_deactivate\n"));
  }
}

TEST(Doctor, TellsASimulatedBuild) {
  const auto outcome = ighBus("doctor");
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("warning  platform             this build runs on the simulated"));
}

} // namespace
