// igh_bus adapt: each trap of the makers' files once, small.
#include "Descriptions.h"

using testing::HasSubstr;
using namespace descriptions;

namespace {

// "# title, options" begins a trap, "!" behind the title when something stays out of reach; "=" is what is
// written, ">" what is told; the other lines are PDOs and XML.
constexpr const char* TRAPS = R"(
# types: what is written has sign and width of what is meant
<Profile><Dictionary><DataTypes><DataType><Name>MY</Name><BaseType>INTEGER16</BaseType></DataType></DataTypes></Dictionary></Profile>
Tx Sm="3" {1A00 }[6000:1:8:BYTE:B][6000:2:16:WORD:W][6000:3:32:DWORD:D][6000:4:16:MY:M][6000:5:24:INT24:T]
Tx Sm="3" {1A01 }[6000:7:32:WHAT:X][6000:8:8:UINT:U]
= 3.0 USINT B | 3.8 UINT W | 3.24 UDINT D | 3.56 INT M | 3.72 UINT T low [0xFFFF T] | 3.88 SINT T high [0xFF T] | 3.96 UDINT X | 3.128 USINT U
> type 0x6000:07 "X": WHAT, 32 bits -> UDINT
# bits over PDOs
Tx Sm="0" {1A00 }[6000:1:1:BOOL:In]
Tx Sm="0" {1A01 }[6010:1:2:BIT2:In]
= 0.0 USINT In 0x6000:01 .. In 0x6010:01 [0x1 In 0x6000:01, 0x6 In 0x6010:01]
# as wide as they are of one object
Tx Sm="3" {1A00 }[6000:1:1:BOOL:A][6000:2:7::B][6000:3:8::C][6010:1:1:BOOL:D][0:0:7::][6000:4:1:BOOL:E][6000:5:23::F]
= 3.0 USINT A .. B [0x1 A, 0xFE B] | 3.8 USINT C | 3.16 USINT D [0x1 D] | 3.24 UINT E .. F [0x1 E, 0xFFFE F] | 3.40 USINT F high [0xFF F]
# with assignment a byte of two PDOs is looked at through the first
<Mailbox><CoE PdoAssign="1"/></Mailbox>
Tx Sm="3" {1A00 }[6000:1:1:BOOL:State__A][6000:2:7::State__B][6000:3:4::C]
Tx Sm="3" {1A01 }[6010:1:4::D][6010:2:1:BOOL:E][0:0:7::]
= 3.0 USINT State [0x1 State__A, 0xFE State__B] | 3.8 USINT C .. D [0xF C, 0xF0 D] | 3.12  D | 3.16 USINT E [0x1 E]
> -> USINT "C .. D": 0xF "C" 0xF0 "D"
# the master writes the mapping, but of a fixed PDO !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Tx Sm="3" {1A00 }[6000:1:8:BYTE:A][6000:2:1:BOOL:B][6000:3:7::C][6000:4:64:ULINT:Q]
Tx Sm="3" Fixed="1" {1A01 }[6010:1:1:BOOL:D][6010:2:7::E]
= 3.0 USINT A | 3.8 USINT B .. C [0x1 B, 0xFE C] | 3.9  C | 3.16 ULINT Q | 3.80 USINT D .. E [0x1 D, 0xFE E]
> "Q": the master writes
# pieces of what begins and ends within bytes
Tx Sm="3" {1A00 }[6000:1:4::A][6000:2:76::B]
= 3.0 UDINT A .. B [0xF A, 0xFFFFFFF0 B] | 3.32 UDINT B [bits 28..59] [0xFFFFFFFF B] | 3.64 UINT B high [0xFFFF B]
# an object twice in what the master writes: by the second name the first would be moved !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Rx Sm="2" {1600 }[7000:1:8:USINT:A][7000:1:8:USINT:B]
= 2.0 USINT A
> "B": its object stands
# nothing is moved behind the last entry !
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Tx Sm="3" {1A00 }[6000:1:17:UDINT:A][0:0:15::]
= 3.0 UDINT A
> "A": the master writes
> name gaps:  -> "Gap SM 3 bit 17"
# PDOs in another order, an object mapped twice
Tx Sm="3" {1A01 }[6000:1:8:USINT:A]
Tx Sm="3" {1A00 }[6000:1:16:UINT:B]
= 3.0 USINT A | 3.8 UINT B
> pdo SM 3: 2 PDOs -> one PDO 0x1A01
> object "B": 0x6000:01 -> 0x6000:FF
# the same, and the master would write what they hold: they go where it cannot
<Mailbox><CoE PdoConfig="1"/></Mailbox>
Rx Sm="2" {1601 }[7010:1:16:INT:A]
Rx Sm="2" Fixed="1" {1600 }[7000:1:8:USINT:B]
Tx Sm="3" {1A01 }[6010:1:4::C][6010:2:4::D]
Tx Sm="3" {1A00 }[6000:1:16:INT:E]
Tx {1BFF }[6020:1:8:USINT:F]
= 2.0 INT A | 2.16 USINT B | 3.0 USINT C .. D [0xF C, 0xF0 D] | 3.8 INT E
> pdo SM 2: 2 PDOs -> one PDO 0x1600
> pdo SM 3: 2 PDOs -> one PDO 0x1BFE
# both directions on one sync manager
<Sm>Outputs</Sm><Sm>Inputs</Sm>
Rx Sm="0" {1600 }[7000:1:8:USINT:O]
Tx Sm="0" {1600 }[6000:1:8:USINT:I]
= 0.0 USINT O | 1.0 USINT I
> pdo PDO 0x1600: SM 0 -> SM 1
> pdo SM 1: 0x1600 -> 0x1601
# wished PDOs, --pdo 0=0x1A01
Tx Sm="3" {1A00 }[6000:1:8:USINT:A]
Tx {1A01 }[6010:1:8:USINT:B]
= 3.0 USINT B
> pdo PDO 0x1A01: no sync manager -> assigned
> --pdo: the slave does not let
> pdo TxPdo: 0x1A00 -> left out
# the mode's own PDOs
<Dc><OpMode><Name>Free</Name><AssignActivate>0</AssignActivate></OpMode><OpMode><Name>DCSYNC</Name><AssignActivate>#x300</AssignActivate>
<CycleTimeSync0 Factor="2">0</CycleTimeSync0><Sm No="3"><Pdo>#x1A01</Pdo></Sm></OpMode></Dc>
Tx Sm="3" {1A00 }[6000:1:8:USINT:A]
Tx {1A01 }[6010:1:8:USINT:B]
= 3.0 USINT B
> clock operation mode: "DCSYNC" -> "DC"
> CycleTimeSync0 Factor 2 -> SYNC0 cycle the period, shift half
# the first active mode
<Dc><OpMode><Name>DC</Name></OpMode><OpMode><Name>Fast</Name><AssignActivate>#x700</AssignActivate></OpMode></Dc>
Tx Sm="3" {1A00 }[6000:1:8:USINT:A]
= 3.0 USINT A
> clock operation mode: "Fast" -> "DC"
# no clocks wished !, --mode none
<Dc><OpMode><Name>DC Sync</Name><AssignActivate>#x700</AssignActivate></OpMode></Dc>
Tx Sm="3" {1A00 }[6000:1:8:USINT:A]
= 3.0 USINT A
> "distributed clocks": --mode none
# numbers
<Dc><OpMode><Name>DC</Name><AssignActivate>#x700</AssignActivate><CycleTimeSync0>0000200000</CycleTimeSync0></OpMode></Dc>
Tx Sm="#X3" {1A00 }[0x6041:010:08:USINT:A][6042:0:16:INT:B][6043:0:4000000008:INT8:C]
= 3.0 USINT A | 3.8 INT B | 3.24 SINT C
> "A" Index: #x0x6041 -> 24641
> "A" BitLen: 08 -> 8
> Sm: #X3 -> 3
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
      body += line + '\n';
  }
  const bool whole = title.find('!') == std::string::npos;
  const auto options = title.find("--");
  std::string description;
  const auto result = adapted(file(device(pdos(body))),
                              options == std::string::npos ? "" : title.substr(options), description);
  ASSERT_EQ(result.value("/devices"_json_pointer, Json::array()).size(), 1U) << result;
  const auto& adaptedDevice = result["devices"][0];
  EXPECT_EQ(entriesOf(adaptedDevice), entries);
  for (const auto& text : told)
    EXPECT_THAT(changesOf(adaptedDevice), HasSubstr(text));
  EXPECT_EQ(adaptedDevice["whole_after"], whole);
  EXPECT_EQ(description.find(": everything can be used") != std::string::npos, whole) << description;
}

TEST(Adapt, TakesDevicesThatTheLibraryPassesOver) {
  std::string description;
  const auto xml = element("Device", "<Type ProductCode=\"7\"/><Name>N</Name>" +
                                         pdos("Tx Sm=\"3\" {1A00 }[6000:1:8:USINT:A]\n"));
  const auto taken = adapted(file(xml), "", description)["devices"][0];
  EXPECT_EQ(taken["name"], "N");
  EXPECT_THAT(changesOf(taken), HasSubstr("RevisionNo: none -> 0"));
  EXPECT_THAT(description, HasSubstr(": everything can be used"));
}

TEST(Adapt, SettlesWhatMakersLeaveOpenAndTellsIt) {
  const std::string traps = TRAPS;
  for (auto start = traps.find("\n# "); start + 1 < traps.size();) {
    const auto end = std::min(traps.find("\n# ", start + 1), traps.size() - 1);
    checkTrap(traps.substr(start + 3, end - start - 3));
    start = end;
  }
}

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

} // namespace
