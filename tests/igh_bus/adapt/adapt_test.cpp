// igh_bus adapt: each trap of the makers' files once, small.
#include "Program.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sys/stat.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

namespace {

std::string element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name.substr(0, name.find(' ')) + ">";
}

std::string device(const std::string& body, const std::string& type = "ProductCode=\"7\" RevisionNo=\"1\"") {
  return element("Device", element("Type " + type, "*/DEV") + body);
}

std::string file(const std::string& devices, const std::string& modules = "") {
  return element("EtherCATInfo",
                 "<Vendor><Id>#x9</Id><Name>M</Name></Vendor>" +
                     element("Descriptions", element("Devices", devices) + element("Modules", modules)));
}

// "Tx Sm="3" #x1A00 Name -#x1A01: #x6000 1 8 USINT A | 0 0 8": a PDO, the PDOs that it excludes, and its
// entries: index, subindex, bits, and, if any, type ("-" for none) and name.
std::string pdo(const std::string& line) {
  const auto colon = line.find(": ");
  std::smatch start;
  const std::string front = line.substr(0, colon);
  std::regex_match(front, start, std::regex("(.x)(.*?) (#x\\S+|-) ?(.*?)((?: ?-#x\\S+)*)"));
  std::string entries;
  std::istringstream list(line.substr(colon + 2));
  for (std::string entry; std::getline(list, entry, '|');) {
    std::istringstream words(entry);
    std::string parts[5];
    for (int i = 0; i < 4; ++i)
      words >> parts[i];
    std::getline(words >> std::ws, parts[4]);
    static constexpr const char* NAMES[] = {"Index", "SubIndex", "BitLen", "DataType", "Name"};
    std::string xml;
    for (int i = 0; i < 5; ++i)
      xml += parts[i] == "-" ? "" : element(NAMES[i], parts[i]);
    entries += element("Entry", xml);
  }
  return element(start.str(1) + "Pdo" + start.str(2),
                 element("Index", start[3]) + element("Name", start[4]) +
                     std::regex_replace(start.str(5), std::regex(" ?-(\\S+)"), "<Exclude>$1</Exclude>") +
                     entries);
}

// What is written, as "3.16 UINT Name [0x1 bit, 0xFE other]" for each entry: sync manager, bit, type.
std::string entriesOf(const Json& device) {
  std::string text;
  for (const auto& entry : device.at("entries")) {
    text += (text.empty() ? "" : " | ") + entry.at("sync_manager").dump() + "." +
            entry.at("bit_offset").dump() + " " + entry.at("type").get<std::string>() + " " +
            entry.at("name").get<std::string>();
    std::string bits;
    for (const auto& bit : entry.value("bits", Json::array()))
      bits += (bits.empty() ? " [" : ", ") + bit.at("mask").get<std::string>() + " " +
              bit.at("name").get<std::string>();
    text += bits + (bits.empty() ? "" : "]");
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
      text += line.get<std::string>() + "\n";
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

// "# title, options" begins a trap, "!" behind the title when something stays out of reach; "=" is what is
// written, ">" what is told; the other lines are PDOs and XML.
constexpr const char* TRAPS = R"(
# names
Tx Sm="3" #x1A00 P1: #x6000 1 8 USINT V | #x6000 2 8 USINT U | 0 0 8
Tx Sm="3" #x1A01 P1: #x6010 1 8 USINT V | #x6010 2 8 USINT | 0 0 8
= 3.0 USINT P1 V 0x6000:01 | 3.8 USINT U | 3.24 USINT P1 V 0x6010:01 | 3.32 USINT P1 0x6010:02
> name 0x6000:01: "V" -> "P1 V 0x6000:01"
> name 0x6010:02: "" -> "P1 0x6010:02"
> name gaps:
# types
<Profile><Dictionary><DataTypes><DataType><Name>MY</Name><BaseType>INTEGER16</BaseType></DataType></DataTypes></Dictionary></Profile>
Tx Sm="3" #x1A00: #x6000 1 8 BYTE B | #x6000 2 16 WORD W | #x6000 3 32 DWORD D | #x6000 4 16 MY M | #x6000 5 8 INT8 I
Tx Sm="3" #x1A01: #x6000 7 32 WHAT X | #x6000 8 8 UINT U | #x6000 9 8 BOOL F | #x6000 10 64 LREAL L | #x6000 6 8 BITARR8 R
= 3.0 USINT B | 3.8 UINT W | 3.24 UDINT D | 3.56 INT M | 3.72 SINT I | 3.80 UDINT X | 3.112 USINT U | 3.120 USINT F | 3.128 LREAL L | 3.192 USINT R
> type 0x6000:07 "X": WHAT, 32 bits -> UDINT
> type 0x6000:08 "U": UINT, 8 bits -> USINT
# wide ones are cut
Tx Sm="3" #x1A00: #x6000 1 64 ULINT Q | #x6000 2 24 INT24 T | #x6000 3 32 ARRAY[2..3]OFINT A | #x6000 4 56 WHAT O
= 3.0 UDINT Q low [0xFFFFFFFF Q] | 3.32 UDINT Q high [0xFFFFFFFF Q] | 3.64 UINT T low [0xFFFF T] | 3.80 SINT T high [0xFF T] | 3.88 INT A[2] [0xFFFF A] | 3.104 INT A[3] [0xFFFF A] | 3.120 UDINT O[0] [0xFFFFFFFF O] | 3.152 UINT O[1] [0xFFFF O] | 3.168 USINT O[2] [0xFF O]
> bits 0x6000:01: "Q" ULINT, 64 bits -> UDINT "Q low"
> from bit 32
# bits over PDOs, filled up behind the last
Tx Sm="0" #x1A00: #x6000 1 1 BOOL In
Tx Sm="0" #x1A01: #x6010 1 2 BIT2 In
= 0.0 USINT In 0x6000:01 .. In 0x6010:01 [0x1 In 0x6000:01, 0x6 In 0x6010:01]
# as wide as they are of one object
Tx Sm="3" #x1A00: #x6000 1 1 BOOL A | #x6000 2 7 - B | #x6000 3 8 - C | #x6010 1 1 BOOL D | 0 0 7 | #x6000 4 1 BOOL E | #x6000 5 23 - F
= 3.0 USINT A .. B [0x1 A, 0xFE B] | 3.8 USINT C | 3.16 USINT D [0x1 D] | 3.24 UINT E .. F [0x1 E, 0xFFFE F] | 3.40 USINT F high [0xFF F]
# with assignment a byte of two PDOs is looked at through the first
<Mailbox><CoE PdoAssign="1"/></Mailbox>
Tx Sm="3" #x1A00: #x6000 1 1 BOOL State__A | #x6000 2 7 - State__B | #x6000 3 4 - C
Tx Sm="3" #x1A01: #x6010 1 4 - D | #x6010 2 1 BOOL E | 0 0 7
= 3.0 USINT State [0x1 State__A, 0xFE State__B] | 3.8 USINT C .. D [0xF C, 0xF0 D] | 3.12  D | 3.16 USINT E [0x1 E]
> -> USINT "C .. D": 0xF "C" 0xF0 "D"
# the master writes the mapping, but of a fixed PDO !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Tx Sm="3" #x1A00: #x6000 1 8 BYTE A | #x6000 2 1 BOOL B | #x6000 3 7 - C | #x6000 4 64 ULINT Q
Tx Sm="3" Fixed="1" #x1A01: #x6010 1 1 BOOL D | #x6010 2 7 - E
= 3.0 USINT A | 3.8 USINT B .. C [0x1 B, 0xFE C] | 3.9  C | 3.16 ULINT Q | 3.80 USINT D .. E [0x1 D, 0xFE E]
> "Q": the master writes
# pieces of what begins and ends within bytes
Tx Sm="3" #x1A00: #x6000 1 4 - A | #x6000 2 76 - B
= 3.0 UDINT A .. B [0xF A, 0xFFFFFFF0 B] | 3.32 UDINT B [bits 28..59] [0xFFFFFFFF B] | 3.64 UINT B high [0xFFFF B]
# an object twice in what the master writes: by the second name the first would be moved !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Rx Sm="2" #x1600: #x7000 1 8 USINT A | #x7000 1 8 USINT B
= 2.0 USINT A
> object 0x7000:01 is mapped twice
# nothing is moved behind the last entry !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Tx Sm="3" #x1A00: #x6000 1 17 UDINT A | 0 0 15
= 3.0 UDINT A
> "A": the master writes
# PDOs in another order, an object mapped twice
Tx Sm="3" #x1A01: #x6000 1 8 USINT A
Tx Sm="3" #x1A00: #x6000 1 16 UINT B
= 3.0 USINT A | 3.8 UINT B
> pdo SM 3: 2 PDOs -> one PDO 0x1A01
> object "B": 0x6000:01 -> 0x6000:FF
# the same, and the master would write what they hold: they go where it cannot
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Rx Sm="2" #x1601: #x7010 1 16 INT A
Rx Sm="2" Fixed="1" #x1600: #x7000 1 8 USINT B
Tx Sm="3" #x1A01: #x6010 1 4 - C | #x6010 2 4 - D
Tx Sm="3" #x1A00: #x6000 1 16 INT E
Tx #x1BFF: #x6020 1 8 USINT F
= 2.0 INT A | 2.16 USINT B | 3.0 USINT C .. D [0xF C, 0xF0 D] | 3.8 INT E
> pdo SM 2: 2 PDOs -> one PDO 0x1600
> pdo SM 3: 2 PDOs -> one PDO 0x1BFE
# both directions on one sync manager
<Sm>Outputs</Sm><Sm>Inputs</Sm>
Rx Sm="0" #x1600: #x7000 1 8 USINT O
Tx Sm="0" #x1600: #x6000 1 8 USINT I
= 0.0 USINT O | 1.0 USINT I
> pdo PDO 0x1600: SM 0 -> SM 1
> pdo SM 1: 0x1600 -> 0x1601
# exclusions: mandatory before marked before first
Tx Sm="3" #x1A00 -#x1A02: #x6000 1 8 USINT A
Tx Sm="3" #x1A01: #x6010 1 8 USINT B
Tx Mandatory="1" #x1A02 -#x1A01: #x6020 1 8 USINT C
= 3.0 USINT C
> pdo PDO 0x1A00: SM 3 -> left out
> pdo PDO 0x1A01: SM 3 -> left out
# no sync manager: the first that excludes nothing
<Mailbox><CoE/></Mailbox>
Tx #x1A00 -#x1A01: #x6000 1 8 USINT A
Tx #x1A02: #x6010 1 8 USINT B
= 3.0 USINT B
> pdo PDO 0x1A02: no sync manager -> SM 3
> pdo TxPdo: 0x1A00 -> left out
# wished PDOs, --pdo 0=0x1A01
Tx Sm="3" #x1A00: #x6000 1 8 USINT A
Tx #x1A01: #x6010 1 8 USINT B
= 3.0 USINT B
> pdo PDO 0x1A01: no sync manager -> assigned
> --pdo: the slave does not let
> pdo TxPdo: 0x1A00 -> left out
# the mode's own PDOs
<Dc><OpMode><Name>Free</Name><AssignActivate>0</AssignActivate></OpMode><OpMode><Name>DCSYNC</Name><AssignActivate>#x300</AssignActivate>
<CycleTimeSync0 Factor="2">0</CycleTimeSync0><Sm No="3"><Pdo>#x1A01</Pdo></Sm></OpMode></Dc>
Tx Sm="3" #x1A00: #x6000 1 8 USINT A
Tx #x1A01: #x6010 1 8 USINT B
= 3.0 USINT B
> clock operation mode: "DCSYNC" -> "DC"
> CycleTimeSync0 Factor 2 -> SYNC0 cycle the period, shift half
# the mode that means clocks
<Dc><OpMode><Name>Special</Name><AssignActivate>#x700</AssignActivate></OpMode><OpMode><Name>DC-Synchron</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc>
Tx Sm="3" #x1A00: #x6000 1 8 USINT A
= 3.0 USINT A
> clock operation mode: "DC-Synchron" -> "DC"
# the first active mode
<Dc><OpMode><Name>DC</Name></OpMode><OpMode><Name>Fast</Name><AssignActivate>#x700</AssignActivate></OpMode></Dc>
Tx Sm="3" #x1A00: #x6000 1 8 USINT A
= 3.0 USINT A
> clock operation mode: "Fast" -> "DC"
# no clocks wished !, --mode none
<Dc><OpMode><Name>DC Sync</Name><AssignActivate>#x700</AssignActivate></OpMode></Dc>
Tx Sm="3" #x1A00: #x6000 1 8 USINT A
= 3.0 USINT A
> "distributed clocks": --mode none
# numbers
<Dc><OpMode><Name>DC</Name><AssignActivate>#x700</AssignActivate><CycleTimeSync0>0000200000</CycleTimeSync0></OpMode></Dc>
Tx Sm="03" #x1A00: #x0x6041 010 08 USINT A | #X6042 0 16 INT B | #x6043 0 4000000008 INT8 C
= 3.0 USINT A | 3.8 INT B | 3.24 SINT C
> "A" Index: #x0x6041 -> 24641
> "A" BitLen: 08 -> 8
> "B" Index: #X6042 -> 24642
> "C" BitLen: 4000000008 -> 8
> CycleTimeSync0: 0000200000 -> 200000
)";

void checkTrap(const std::string& trap) {
  SCOPED_TRACE(trap);
  std::istringstream lines(trap);
  std::string title;
  std::getline(lines, title);
  std::string body;
  std::string entries;
  std::vector<std::string> told;
  for (std::string line; std::getline(lines, line);) {
    if (line[0] == '=')
      entries = line.substr(2);
    else if (line[0] == '>')
      told.push_back(line.substr(2));
    else
      body += line[0] == '<' ? line : pdo(line);
  }
  const bool whole = title.find('!') == std::string::npos;
  const auto options = title.find("--");
  std::string description;
  const auto result =
      adapted(file(device(body)), options == std::string::npos ? "" : title.substr(options), description);
  ASSERT_EQ(result.value("/devices"_json_pointer, Json::array()).size(), 1U) << result;
  const auto& adaptedDevice = result["devices"][0];
  EXPECT_EQ(entriesOf(adaptedDevice), entries);
  for (const auto& text : told)
    EXPECT_THAT(changesOf(adaptedDevice), HasSubstr(text));
  EXPECT_EQ(adaptedDevice["whole_after"], whole);
  EXPECT_EQ(description.find(": everything can be used") != std::string::npos, whole) << description;
}

TEST(Adapt, SettlesWhatMakersLeaveOpenAndTellsIt) {
  const std::string traps = TRAPS;
  for (auto start = traps.find("\n# "); start + 1 < traps.size();) {
    const auto end = std::min(traps.find("\n# ", start + 1), traps.size() - 1);
    checkTrap(traps.substr(start + 3, end - start - 3));
    start = end;
  }
}

const std::string modular = R"(<Mailbox><CoE/></Mailbox><Slots SlotPdoIncrement="1" SlotIndexIncrement="#x10">
<Slot MinInstances="1" MaxInstances="2"><ModuleIdent>#x20</ModuleIdent><ModuleIdent Default="1">#x21</ModuleIdent></Slot>
<Slot SlotPdoIncrement="4" SlotIndexIncrement="#x40"><ModuleIdent>#x20</ModuleIdent></Slot>
<Slot MinInstances="0"><ModuleIdent>#x22</ModuleIdent></Slot></Slots>)";
const std::string moduleList = R"(<Module><Type ModuleIdent="#x20">AI</Type><TxPdo Sm="3">
<Index DependOnSlot="1">#x1A00</Index><Entry><Index DependOnSlot="true">#x6000</Index><SubIndex>1</SubIndex><BitLen>8</BitLen>
<Name>V</Name><DataType>USINT</DataType></Entry></TxPdo></Module><Module><Type ModuleIdent="#x21">AS</Type><TxPdo Sm="3">
<Index DependOnSlot="1">#x1A00</Index><Entry><Index DependOnSlot="1">#x6000</Index><SubIndex>1</SubIndex><BitLen>8</BitLen>
<Name>V</Name><DataType>SINT</DataType></Entry></TxPdo></Module>)";

// Slots that repeat and have increments of their own, and modules in a file that the first one names.
TEST(Adapt, PlacesTheModulesOfSlots) {
  const auto modules = scratch("modules.xml", element("EtherCATModule", "<Vendor><Id>9</Id></Vendor>" +
                                                                            element("Modules", moduleList)));
  const auto reference = element("InfoReference", "elsewhere\\" + modules.substr(modules.rfind('/') + 1));
  auto xml = file(device(modular));
  xml.insert(xml.find("<Vendor>"), reference);
  std::string description;
  const auto standard = adapted(xml, "", description)["devices"][0];
  EXPECT_EQ(entriesOf(standard), "3.0 SINT 1st V | 3.8 USINT 2nd V");
  EXPECT_THAT(changesOf(standard), HasSubstr("slot 3 is taken for empty"));
  EXPECT_THAT(description, HasSubstr("slots: 3, increments: index 0x10, PDO 0x1"));
  const auto third = adapted(xml, "--module 0:3=0x20", description)["devices"][0];
  EXPECT_EQ(entriesOf(third), "3.0 SINT 1st V | 3.8 USINT 2nd V | 3.16 USINT 3rd V");
  EXPECT_EQ(third["entries"][2]["object"], "0x6050:01");
  const auto wished = adapted(xml, "--module 0:2=0x20 --module 0:4=0x21", description)["devices"][0];
  EXPECT_EQ(entriesOf(wished), "3.0 SINT 1st V | 3.8 USINT 2nd V | 3.16 USINT 3rd V | 3.24 SINT 4th V");
  EXPECT_EQ(wished["entries"][2]["object"], "0x6020:01");
  EXPECT_EQ(wished["entries"][3]["object"], "0x6060:01");
  EXPECT_EQ(wished["entries"][3]["pdo"], "0x1A06");
  std::remove(modules.c_str());
  EXPECT_THAT(adapted(xml, "", description).dump(), HasSubstr("a file refers to it, and it is not there"));
}

std::string revision(const std::string& number, const std::string& entry, const std::string& more = "") {
  return device(more + pdo("Tx Sm=\"3\" #x1A00: #x6000 1 " + entry),
                "ProductCode=\"#x7\" RevisionNo=\"" + number + "\"");
}

std::string busSlave(const std::string& product, const std::string& revision, const std::string& more = "") {
  return R"({"vendor_id": 9, "product_code": )" + product + R"(, "revision": )" + revision + more + "}";
}

// The description of the highest revision below, though hidden, under the slave's own number; what the slave
// itself says of its modules; and a header that compilers take.
TEST(Adapt, ServesTheSlavesOfABus) {
  const auto input =
      scratch("maker.xml",
              file(revision("2", "1 BOOL Old") +
                       revision("4", "1 BOOL a/*b?\"\\ \xC3\xA9", "<HideType RevisionNo=\"4\"/>") +
                       revision("9", "8 USINT New") + device(modular, "ProductCode=\"#x8\" RevisionNo=\"1\""),
                   moduleList));
  const std::string inputs =
      R"(, "sync_managers": [{"index": 3, "direction": "input", "pdos": [{"index": 6656, "entries": )"
      R"([{"index": 24576, "subindex": 1, "bit_length": 1}]}]}])";
  const auto bus = scratch(
      "bus.json", R"({"slaves": [)" + busSlave("7", "8", inputs) + ", " +
                      busSlave("7", "8", R"(, "alias": 3)" + inputs) + ", " +
                      busSlave("8", "1",
                               R"(, "objects": [{"index": "0xF050", "value": 2, "type": "USINT"}, )"
                               R"({"index": "0xF050", "subindex": 1, "value": 0, "type": "UDINT"}, )"
                               R"({"index": "0xF050", "subindex": 2, "value": 32, "type": "UDINT"}])") +
                      "]}");
  const auto output = scratch("machine.xml");
  const auto header = scratch("machine.h");
  const std::string base = "adapt --bus " + bus + " --eni " + input + " ";
  const auto outcome = ighBus(base + "--json -o " + output + " --header " + header);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto result = Json::parse(outcome.out);
  ASSERT_EQ(result["devices"].size(), 2U);
  const auto& first = result["devices"][0];
  EXPECT_EQ(first["slaves"], Json({0, 1}));
  EXPECT_EQ(first["hidden"], true);
  EXPECT_THAT(changesOf(first), HasSubstr("revision device: 0x00000004 -> 0x00000008"));
  EXPECT_THAT(changesOf(first), HasSubstr("alias slave 1: 3"));
  EXPECT_EQ(entriesOf(result["devices"][1]), "3.0 USINT 2nd V");
  EXPECT_EQ(result["summary"]["reachable_before"], 0);
  const auto described = ighBus("describe " + input + " " + output).out;
  EXPECT_THAT(described, HasSubstr("igh_bus adapt would make 5 of 5 entries reachable, 1 are now"));
  EXPECT_THAT(described.substr(described.find("would make") + 1),
              AllOf(HasSubstr("\"*/DEV\" 0x00000007 revision 0x00000008: everything can be used"),
                    Not(HasSubstr("would make"))));

  EXPECT_THAT(ighBus("scan --bus " + bus + " --eni " + input).out,
              HasSubstr("would make 3 of 3 entries reachable"));
  EXPECT_THAT(ighBus("scan --bus " + bus + " --eni " + output).out, Not(HasSubstr("would make")));

  EXPECT_THAT(readFile(header), HasSubstr("#define S1_DEV_POSITION 1\n"));
  EXPECT_THAT(readFile(header), HasSubstr("#define S1_DEV_A_B_MASK 0x1U\n"));
  for (const std::string compiler : {"cc -std=c99 -x c", "c++ -std=c++17 -x c++"}) {
    const auto line = "echo 'const char* machine = S1_DEV_A_B;' | " + compiler +
                      " -Wall -Wextra -Wpedantic -Werror -fsyntax-only -include ";
    EXPECT_EQ(std::system((line + header + " -").c_str()), 0);
  }

  // The nearest revision is not hidden, and yet none of the slave's; modules are told by another object too.
  const auto configured =
      scratch("bus.json", std::regex_replace(readFile(bus), std::regex("0xF050"), "0xF030"));
  const auto any = Json::parse(ighBus(base + "--json --revision any").out);
  EXPECT_EQ(any["devices"][0]["described_revision"], "0x00000009");
  EXPECT_EQ(any["devices"][0]["reachable_before"], 0);
  EXPECT_EQ(entriesOf(any["devices"][1]), "3.0 USINT 2nd V");
  const auto before = readFile(output);
  const auto pipe = output + ".pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::pair<std::string, std::string> refusals[] = {
      {"slave 0 \"\" (vendor 0x00000009, product 0x00000007, revision 0x00000008) is not described: "
       "described are "
       "revisions 0x00000002, 0x00000004, 0x00000009 (see --revision); nor are 1 more slaves",
       base + "--revision exact -o " + output},
      {"share one description", base + "--mode 0=none -o " + output},
      {"there are 0 to 2", base + "--mode 3=none -o " + output},
      {"has the modes none", base + "--mode 0=DC --mode 1=DC -o " + output},
      {"has no such PDO", base + "--pdo 0=0x1A05 --pdo 1=0x1A05 -o " + output},
      {"no module of that ident", base + "--module 2:1=0x99 -o " + output},
      {"has 4 slots", base + "--module 2:5=0x20 -o " + output},
      {"SLAVE:SLOT", base + "--module 2=0x20 -o " + output},
      {"--revision", base + "--revision newest -o " + output},
      {"with -o", base},
      {"is one of the inputs", base + "-o " + input},
      {"is one of the inputs", base + "-o " + output + " --header " + input},
      {"is a directory", base + "-o /tmp"},
      {"No such file", base + "-o /nowhere/machine.xml"},
      {"two outputs", base + "-o " + output + " --header " + output},
      {"not a regular file", base + "-o " + pipe},
      {"cannot be made", base + "-o " + output + " --report " + input},
      {"No such file", "adapt --all --eni /nowhere.xml -o " + output},
      {"line 1", "adapt --all --eni " + bus + " -o " + output},
      {"excludes", base + "--all -o " + output}};
  for (const auto& [reason, line] : refusals) {
    const auto refused = ighBus(line);
    EXPECT_EQ(refused.status, 2) << line;
    EXPECT_THAT(refused.err, HasSubstr(reason)) << line;
    EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1) << line << refused.err;
    EXPECT_EQ(readFile(output), before) << line;
  }
  std::remove(pipe.c_str());
  const auto link = input + ".link";
  ASSERT_EQ(::link(input.c_str(), link.c_str()), 0);
  EXPECT_THAT(ighBus(base + "-o " + link).err, HasSubstr("is one of the inputs"));
  // The same input gives the same bytes, through a link too, and leaves nothing beside them.
  std::remove(link.c_str());
  ASSERT_EQ(symlink(output.c_str(), link.c_str()), 0);
  const auto report = output + "_report/";
  EXPECT_EQ(ighBus(base + "-o " + link + " --report " + report).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(readFile(output), before);
  EXPECT_EQ(Json::parse(readFile(report + "adapt.json"))["devices"], result["devices"]);
  EXPECT_THAT(readFile(report + "adapt.txt"), HasSubstr("  slaves 0, 1  \"*/DEV\"  alias  slave 1: 3 ("));
  std::filesystem::remove_all(report);
  for (const auto& entry : std::filesystem::directory_iterator(testing::TempDir()))
    EXPECT_EQ(entry.path().string().find(output + "."), std::string::npos) << entry.path();
  for (const auto& path : {input, bus, output, header, link})
    std::remove(path.c_str());
}

} // namespace
