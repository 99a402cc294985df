// igh_bus adapt: each trap of the makers' files once, small.
#include "Program.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

using testing::HasSubstr;
using Json = nlohmann::json;

namespace {

std::string element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name.substr(0, name.find(' ')) + ">";
}

std::string coe(const std::string& attributes = "") {
  return "<Mailbox><CoE " + attributes + "/></Mailbox>";
}

// Entries as "INDEX SUBINDEX BITS TYPE NAME", one behind each "|"; the type may be "-", the name missing.
std::string pdo(const std::string& tag, const std::string& start, const std::string& list) {
  std::string xml = start[0] == '#' ? element("Index", start) : start;
  std::istringstream lines(list);
  for (std::string line; std::getline(lines, line, '|');) {
    std::istringstream words(line);
    std::string index;
    std::string subindex;
    std::string bits;
    std::string type;
    std::string name;
    words >> index >> subindex >> bits >> type >> std::ws;
    std::getline(words, name);
    xml += element("Entry", element("Index", index) + element("SubIndex", subindex) +
                                element("BitLen", bits) + (name.empty() ? "" : element("Name", name)) +
                                (type == "-" ? "" : element("DataType", type)));
  }
  return element(tag, xml);
}

std::string device(const std::string& body,
                   const std::string& type = "ProductCode=\"#x7\" RevisionNo=\"#x1\"") {
  return element("Device", element("Type " + type, "DEV") + body);
}

std::string file(const std::string& devices, const std::string& modules = "") {
  return "<EtherCATInfo><Vendor><Id>#x9</Id><Name>M</Name></Vendor><Descriptions><Devices>" + devices +
         "</Devices><Modules>" + modules + "</Modules></Descriptions></EtherCATInfo>";
}

std::string mode(const std::string& name, const std::string& assign, const std::string& more = "") {
  return element("OpMode", element("Name", name) + element("AssignActivate", assign) + more);
}

// What is written, as "3.16 UINT Name [0x1 bit, 0xFE other]" for each entry: sync manager, bit, type.
std::string entriesOf(const Json& device) {
  std::string text;
  for (const auto& entry : device.at("entries")) {
    text += std::to_string(entry.at("sync_manager").get<int>()) + "." +
            std::to_string(entry.at("bit_offset").get<int>()) + " " + entry.at("type").get<std::string>() +
            " " + entry.at("name").get<std::string>();
    std::string separator = " [";
    for (const auto& bit : entry.value("bits", Json::array())) {
      text += separator + bit.at("mask").get<std::string>() + " " + bit.at("name").get<std::string>();
      separator = ", ";
    }
    text += entry.contains("bits") ? "]\n" : "\n";
  }
  return text;
}

std::string changesOf(const Json& device) {
  std::string text;
  for (const auto& change : device.at("changes"))
    text += change.at("what").get<std::string>() + " " + change.at("where").get<std::string>() + ": " +
            change.at("from").get<std::string>() + " -> " + change.at("to").get<std::string>() + "\n";
  for (const char* list : {"open", "reasons"}) {
    for (const auto& line : device.at(list))
      text += std::string(list) + " " + line.get<std::string>() + "\n";
  }
  return text;
}

// Adapts, and reads what was written with describe: the messages of the library are looked at there too.
Json adapted(const std::string& xml, const std::string& options, std::string& description) {
  const auto input = scratch("maker.xml", xml);
  const auto output = scratch("machine.xml");
  const auto outcome = ighBus("adapt --all --json --eni " + input + " -o " + output + " " + options);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  description = ighBus("describe " + output).out;
  EXPECT_EQ(description.find("  0 error"), std::string::npos) << description;
  std::remove(input.c_str());
  std::remove(output.c_str());
  return Json::parse(outcome.out, nullptr, false);
}

struct Trap {
  const char* title;
  std::string body; // of the device
  std::string entries;
  std::vector<std::string> told;
  bool whole = true;
  std::string options = "";
};

const std::string ONE = "#x6000 1 8 USINT A";

const Trap TRAPS[] = {
    {"names",
     pdo("TxPdo Sm=\"3\"", "<Index>#x1A00</Index><Name>P1</Name>",
         "#x6000 1 8 USINT V|#x6000 2 8 USINT U|0 0 8 -") +
         pdo("TxPdo Sm=\"3\"", "<Index>#x1A01</Index><Name>P1</Name>",
             "#x6010 1 8 USINT V|#x6010 2 8 USINT|0 0 8 -"),
     "3.0 USINT P1 V 0x6000:01\n3.8 USINT U\n3.24 USINT P1 V 0x6010:01\n3.32 USINT P1 0x6010:02\n",
     {"name 0x6000:01: \"V\" -> \"P1 V 0x6000:01\"", "name 0x6010:02: \"\" -> \"P1 0x6010:02\"",
      "name gaps"}},
    {"types",
     element("Profile",
             element("Dictionary",
                     element("DataTypes", element("DataType", element("Name", "MY") +
                                                                  element("BaseType", "INTEGER16"))))) +
         pdo("TxPdo Sm=\"3\"", "#x1A00",
             "#x6000 1 8 BYTE B|#x6000 2 16 WORD W|#x6000 3 32 DWORD D|#x6000 4 16 MY M|#x6000 5 8 BITARR8 R|"
             "#x6000 6 8 INT8 I|#x6000 7 32 WHAT X|#x6000 8 8 UINT U|#x6000 9 8 BOOL F|#x6000 10 64 LREAL L"),
     "3.0 USINT B\n3.8 UINT W\n3.24 UDINT D\n3.56 INT M\n3.72 USINT R\n3.80 SINT I\n3.88 UDINT X\n3.120 "
     "USINT U\n"
     "3.128 USINT F\n3.136 LREAL L\n",
     {"type 0x6000:07 \"X\": WHAT, 32 bits -> UDINT", "type 0x6000:08 \"U\": UINT, 8 bits -> USINT"}},
    {"wide ones are cut",
     pdo("TxPdo Sm=\"3\"", "#x1A00",
         "#x6000 1 64 ULINT Q|#x6000 2 24 INT24 T|#x6000 3 32 ARRAY[2..3]OFINT A|#x6000 4 56 WHAT O"),
     "3.0 UDINT Q low [0xFFFFFFFF Q]\n3.32 UDINT Q high [0xFFFFFFFF Q]\n3.64 UINT T low [0xFFFF T]\n"
     "3.80 SINT T high [0xFF T]\n3.88 INT A[2] [0xFFFF A]\n3.104 INT A[3] [0xFFFF A]\n3.120 UDINT O[0] "
     "[0xFFFFFFFF O]\n"
     "3.152 UINT O[1] [0xFFFF O]\n3.168 USINT O[2] [0xFF O]\n",
     {"bits 0x6000:01: \"Q\" ULINT, 64 bits -> UDINT \"Q low\"", "from bit 32"}},
    {"bits over PDOs, filled up behind the last",
     pdo("TxPdo Sm=\"0\"", "#x1A00", "#x6000 1 1 BOOL In") +
         pdo("TxPdo Sm=\"0\"", "#x1A01", "#x6010 1 2 BIT2 In"),
     "0.0 USINT In 0x6000:01 .. In 0x6010:01 [0x1 In 0x6000:01, 0x6 In 0x6010:01]\n",
     {}},
    {"with assignment only within a PDO",
     coe("PdoAssign=\"1\"") +
         pdo("TxPdo Sm=\"3\"", "#x1A00", "#x6000 1 1 BOOL State__A|#x6000 2 7 - State__B|#x6000 3 4 - C") +
         pdo("TxPdo Sm=\"3\"", "#x1A01", "#x6010 1 4 - D|#x6010 2 1 BOOL E|0 0 7 -"),
     "3.0 USINT State [0x1 State__A, 0xFE State__B]\n3.8 - C\n3.12 - D\n3.16 USINT E [0x1 E]\n",
     {"\"C\", \"D\": it shares a byte with another PDO"},
     false},
    {"the master writes the mapping, but for a fixed PDO",
     coe("PdoConfig=\"1\"") +
         pdo("TxPdo Sm=\"3\"", "#x1A00", "#x6000 1 8 BYTE A|#x6000 2 1 BOOL B|#x6000 3 7 - C") +
         pdo("TxPdo Sm=\"3\" Fixed=\"1\"", "#x1A01", "#x6010 1 1 BOOL D|#x6010 2 7 - E"),
     "3.0 USINT A\n3.8 BOOL B\n3.9 - C\n3.16 USINT D .. E [0x1 D, 0xFE E]\n",
     {"\"B\", \"C\": the master writes"},
     false},
    {"an entry across bytes",
     pdo("RxPdo Sm=\"2\"", "#x1600", "#x7000 1 1 BOOL A|#x7000 2 16 UINT B|0 0 7 -"),
     "2.0 UINT A .. B [0x1 A, 0xFFFE B]\n2.16 USINT B high [0x1 B]\n",
     {"from bit 15"}},
    {"PDOs in another order, an object mapped twice",
     pdo("TxPdo Sm=\"3\"", "#x1A01", "#x6000 1 8 USINT A") +
         pdo("TxPdo Sm=\"3\"", "#x1A00", "#x6000 1 16 UINT B"),
     "3.0 USINT A\n3.8 UINT B\n",
     {"pdo SM 3: 2 PDOs -> one PDO 0x1A01", "object \"B\": 0x6000:01 -> 0x6000:FF"}},
    {"both directions on one sync manager",
     element("Sm", "Outputs") + element("Sm", "Inputs") +
         pdo("RxPdo Sm=\"0\"", "#x1600", "#x7000 1 8 USINT O") +
         pdo("TxPdo Sm=\"0\"", "#x1600", "#x6000 1 8 USINT I"),
     "0.0 USINT O\n1.0 USINT I\n",
     {"pdo PDO 0x1600: SM 0 -> SM 1", "pdo SM 1: 0x1600 -> 0x1601"}},
    {"exclusions: mandatory before marked before first",
     pdo("TxPdo Sm=\"3\"", "<Index>#x1A00</Index><Exclude>#x1A02</Exclude>", "#x6000 1 8 USINT A") +
         pdo("TxPdo Sm=\"3\"", "#x1A01", "#x6010 1 8 USINT B") +
         pdo("TxPdo Mandatory=\"1\"", "<Index>#x1A02</Index><Exclude>#x1A01</Exclude>", "#x6020 1 8 USINT C"),
     "3.0 USINT C\n",
     {"pdo PDO 0x1A00: SM 3 -> left out", "pdo PDO 0x1A01: SM 3 -> left out"}},
    {"no sync manager: the first that excludes nothing",
     coe() + pdo("TxPdo", "<Index>#x1A00</Index><Exclude>#x1A01</Exclude>", ONE) +
         pdo("TxPdo", "#x1A02", "#x6010 1 8 USINT B"),
     "3.0 USINT B\n",
     {"pdo PDO 0x1A02: no sync manager -> SM 3", "pdo TxPdo: 0x1A00 -> left out"}},
    {"wished PDOs",
     coe() + pdo("TxPdo Sm=\"3\"", "#x1A00", ONE) + pdo("TxPdo", "#x1A01", "#x6010 1 8 USINT B"),
     "3.0 USINT B\n",
     {"pdo PDO 0x1A01: no sync manager -> assigned", "pdo TxPdo: 0x1A00 -> left out"},
     true,
     "--pdo 0=0x1A01"},
    {"the mode's own PDOs",
     pdo("TxPdo Sm=\"3\"", "#x1A00", ONE) + pdo("TxPdo", "#x1A01", "#x6010 1 8 USINT B") +
         element("Dc", mode("Free", "0") + mode("DCSYNC", "#x300",
                                                element("Sm No=\"3\"", element("Pdo", "#x1A01")) +
                                                    "<CycleTimeSync0 Factor=\"2\">0</CycleTimeSync0>")),
     "3.0 USINT B\n",
     {"clock operation mode: \"DCSYNC\" -> \"DC\"",
      "CycleTimeSync0 Factor 2 -> SYNC0 cycle the period, shift half"}},
    {"the mode that means clocks",
     pdo("TxPdo Sm=\"3\"", "#x1A00", ONE) +
         element("Dc", mode("Off", "0") + mode("Special", "#x700") + mode("DC-Synchron", "#x300")),
     "3.0 USINT A\n",
     {"clock operation mode: \"DC-Synchron\" -> \"DC\""}},
    {"the first active mode",
     pdo("TxPdo Sm=\"3\"", "#x1A00", ONE) + element("Dc", mode("DC", "0") + mode("Fast", "#x700")),
     "3.0 USINT A\n",
     {"clock operation mode: \"Fast\" -> \"DC\""}},
    {"no clocks wished",
     pdo("TxPdo Sm=\"3\"", "#x1A00", ONE) + element("Dc", mode("DC Sync", "#x300")),
     "3.0 USINT A\n",
     {"\"distributed clocks\": --mode none"},
     false,
     "--mode none"},
    {"numbers",
     pdo("TxPdo Sm=\"03\"", "#x1A00", "#x0x6041 010 08 USINT A|#X6042 0 16 INT B") +
         element("Dc", mode("DC", "#x300", element("CycleTimeSync0", "0000200000"))),
     "3.0 USINT A\n3.8 INT B\n",
     {"\"A\" Index: #x0x6041 -> 24641", "\"A\" BitLen: 08 -> 8", "CycleTimeSync0: 0000200000 -> 200000",
      "\"B\" Index: #X6042 -> 24642"}},
};

TEST(Adapt, SettlesWhatMakersLeaveOpenAndTellsIt) {
  for (const auto& trap : TRAPS) {
    SCOPED_TRACE(trap.title);
    std::string description;
    const auto result = adapted(file(device(trap.body)), trap.options, description);
    ASSERT_EQ(result.value("/devices"_json_pointer, Json::array()).size(), 1U) << result;
    const auto& device = result["devices"][0];
    auto written = entriesOf(device);
    for (std::size_t place; (place = written.find("  ")) != std::string::npos;)
      written.replace(place, 2, " - ");
    EXPECT_EQ(written, trap.entries);
    for (const auto& text : trap.told)
      EXPECT_THAT(changesOf(device), HasSubstr(text));
    EXPECT_EQ(device["whole_after"], trap.whole);
    EXPECT_EQ(description.find(": everything can be used") != std::string::npos, trap.whole) << description;
    // What the library can use as it is counts before, and nothing else.
    EXPECT_LE(result["summary"]["reachable_before"], result["summary"]["reachable_after"]);
    EXPECT_EQ(device["changes"].empty(), false);
  }
}

} // namespace
