// What real files do to a library that takes them by their word, each at least once, in short: {INDEX NAME}
// is the index and name of a PDO, [INDEX:SUBINDEX:BITS:TYPE:NAME] an entry, @INDEX an Exclude, and + in front
// of an index lets it grow from slot to slot.
#pragma once

#include <regex>
#include <string>

namespace traps {

inline constexpr const char* DEVICES =
    R"(<EtherCATInfo><InfoReference>MODULES_FILE</InfoReference><Vendor><Id>#x1234</Id></Vendor><Descriptions><Devices>
<Device><Type ProductCode="0010" RevisionNo="#x0x20001">Bits of which each is a PDO, all of one name</Type><HideType RevisionNo="#x20000"/>TERMINAL</Device>
<Device><Type ProductCode="0010" RevisionNo="#x20000">Hidden</Type>
  <RxPdo Sm="0" Fixed="1">{1600 Outputs}[7000:1:3:BIT3:Mode][7000:2:5:BIT5:Level][7000:3:4:BIT4:Mode]</RxPdo></Device>
<Device><Type ProductCode="#x2" RevisionNo="1">PDOs against the order of their indices</Type>
  <TxPdo Sm="0" Fixed="1">{1A01 Later}[6010:1:8:BYTE:State][6010:2:16:WORD:Word]</TxPdo>
  <TxPdo Sm="0" Fixed="1">{1A00 Earlier}[6000:1:4:BIT4:Low][6000:2:12::Wide][6000:3:32:DINT:Position]</TxPdo></Device>
<Device><Type ProductCode="#x3" RevisionNo="1">PDOs that exclude each other</Type>MAILBOX<Mailbox><CoE PdoAssign="1"/></Mailbox>
  <RxPdo Sm="2" Fixed="1">{1600 Position}@1601[607A:0:32:DINT:Target]</RxPdo>
  <RxPdo Sm="2" Fixed="1" Mandatory="1">{1601 Velocity}@1600[60FF:0:32:DINT:Target][6040:0:16:WORD:Control]</RxPdo>
  <TxPdo Fixed="1">{1A00 Position}@1A02[6064:0:32:DINT:Actual]</TxPdo><TxPdo Fixed="1">{1A02 Both}[606C:0:32:DINT:Actual][6041:0:16:WORD:Status]</TxPdo></Device>
<Device><Type ProductCode="#x4" RevisionNo="1">Entries that the master writes, and some that it does not</Type>MAILBOX<Mailbox><CoE PdoAssign="true" PdoConfig="true"/></Mailbox>
  <RxPdo Sm="2">{1600 Drive}[7000:1:4:BIT4:Mode][7000:2:10::Ramp][7000:3:10::Torn][7000:4:8:USINT:Torque]</RxPdo>
  <TxPdo Sm="3">{1A00 Channel 1}[6000:1:16:INT:Value][6000:2:8:UINT8:Status][6000:3:8:BITARR8:]</TxPdo>
  <TxPdo Sm="3">{1A01 Channel 2}[6010:1:16:INT:Value][6010:2:1:BOOL:Low][0:0:7::][6010:3:8:SINT:Status]</TxPdo>
  <TxPdo Sm="3" Fixed="1">{1A02 Channel 2}[6020:1:16:INT:Value][6020:2:1:BOOL:Low][6020:3:7:BIT7:Rest]</TxPdo></Device>
<Device><Type ProductCode="#x5" RevisionNo="1">Types</Type><Profile><Dictionary><DataTypes><DataType><Name>MODE_T</Name><BaseType>SINT</BaseType><BitSize>8</BitSize>
  <EnumInfo/></DataType></DataTypes></Dictionary></Profile>MAILBOX<Mailbox><CoE/></Mailbox><RxPdo Sm="2" Fixed="1">{1600 Outputs}TYPES_OF_7000</RxPdo>
  <TxPdo Sm="3" Fixed="1">{1A00 Inputs}TYPES_OF_6000</TxPdo></Device>
<Device><Type ProductCode="#x6" RevisionNo="1">Bits within a PDO, and beyond it</Type>MAILBOX<Mailbox><CoE PdoAssign="1"/></Mailbox>
  <TxPdo Sm="3" Fixed="1">{1A00 AI}[6000:1:1:BOOL:Under][6000:2:1:BOOL:Over][6000:3:2:BIT2:Limit][0:0:11::][6000:16:1:BOOL:Toggle][6000:17:16:INT:Value]</TxPdo>
  <TxPdo Sm="3" Fixed="1">{1A01 Short}[6010:1:7:BIT7:Seven][6010:2:1:BOOL:One][6010:3:4:BIT4:Torn]</TxPdo>
  <TxPdo Sm="3" Fixed="1">{1A02 Behind it}[6020:1:12::Twelve][6020:2:8:USINT:Even]</TxPdo></Device>
<Device><Type ProductCode="#x7" RevisionNo="1">Clock</Type>MAILBOX<Mailbox><CoE PdoAssign="1"/></Mailbox>
  <TxPdo Sm="3" Fixed="1">{1A00 Standard}@1A01[6000:1:16:INT:Value]</TxPdo><TxPdo Fixed="1">{1A01 Stamped}@1A00[6000:1:16:INT:Value][6000:2:64:ULINT:Time]</TxPdo>
  <Dc><OpMode><Name>FreeRun</Name><AssignActivate>0</AssignActivate></OpMode><OpMode><Name>SyncOnly</Name><AssignActivate>#x100</AssignActivate></OpMode>
  <OpMode><Name>DC-Synchron</Name><AssignActivate>#x0x300</AssignActivate><CycleTimeSync0 Factor="2">0000200000</CycleTimeSync0>
  <ShiftTimeSync0>-5000</ShiftTimeSync0><Sm No="3"><Pdo>#x1A01</Pdo></Sm></OpMode></Dc></Device>
<Device><Type ProductCode="#x8" RevisionNo="1">Modules</Type>MAILBOX<Mailbox><CoE PdoAssign="1"/></Mailbox><TxPdo Sm="3" Fixed="1">{1AFF Head}[F100:1:16:UINT:State]</TxPdo>
  <Slots SlotPdoIncrement="1" SlotIndexIncrement="16">
  <Slot MinInstances="2" MaxInstances="3"><ModuleIdent>#x20</ModuleIdent><ModuleIdent Default="1">#x21</ModuleIdent></Slot>
  <Slot MinInstances="0"><ModuleIdent>#x20</ModuleIdent><ModuleIdent>#x21</ModuleIdent></Slot>
  <Slot SlotIndexIncrement="#x40" SlotPdoIncrement="#x4"><ModuleIdent Default="true">#x20</ModuleIdent></Slot>
  <Slot><ModuleIdent Default="1">#x21</ModuleIdent></Slot></Slots></Device>
</Devices></Descriptions></EtherCATInfo>)";

inline constexpr const char* MODULES = R"(<EtherCATModule><Vendor><Id>#x1234</Id></Vendor><Modules>
<Module><Type ModuleIdent="#x20">Analog</Type><Name>Analog</Name><TxPdo Sm="3" Fixed="1">{+1A00 AI}[+6000:1:8:BYTE:Status][+6000:2:16:INT:Value]</TxPdo></Module>
<Module><Type ModuleIdent="#x21">Digital</Type><Name>Digital</Name><RxPdo Sm="2" Fixed="1">{+1600 DO}[+7000:1:1:BOOL:Output][+7000:2:7::Rest]</RxPdo>
<TxPdo Sm="3" Fixed="1">{+1A00 DI}[+6000:1:1:BOOL:Input][0:0:6::][+6000:2:1:BOOL:Input]</TxPdo></Module></Modules></EtherCATModule>)";

inline std::string expand(std::string text, const std::string& modulesFile = "") {
  std::string terminal;
  for (const char digit : std::string("0123456789AB"))
    terminal += std::string("<TxPdo Sm='0' Fixed='1' Mandatory='1'>{1A0") + digit + " Channel}[60" + digit +
                "0:1:1:BOOL:Input]</TxPdo>";
  const std::pair<const char*, std::string> rules[] = {
      {"MODULES_FILE", modulesFile},
      {"TERMINAL", terminal},
      {"MAILBOX", "<Sm>MBoxOut</Sm><Sm>MBoxIn</Sm><Sm>Outputs</Sm><Sm>Inputs</Sm>"},
      {"TYPES_OF_(.000)",
       "[$1:1:32:UINT32:U32][$1:2:16:INT16:I16][$1:3:8:MODE_T:Mode][$1:4:64:LINT:Long]"
       "[$1:5:64:ULINT:Stamp][$1:6:240:ARRAY [2..31] OF BYTE:Frame][$1:7:24:INT24:Medium]"
       "[$1:8:32:REAL:Force$1][$1:9:64:LREAL:Angle$1][$1:10:16:BITARR16:Flags][$1:11:3:BIT3:"
       "Three]"
       "[$1:12:13::Thirteen][$1:13:16:DWORD:Narrow]"},
      {"\\{(\\+?)(\\w+) ([^}]*)\\}", "<Index DependOnSlot='$1'>#x$2</Index><Name>$3</Name>"},
      {"@(\\w+)", "<Exclude>#x$1</Exclude>"},
      {"\\[(\\+?)(\\w+):(\\d+):(\\d+):([^:]*):([^\\]]*)\\]",
       "<Entry><Index DependOnSlot='$1'>#x$2</Index><SubIndex>$3</SubIndex><BitLen>$4</BitLen>"
       "<Name>$6</Name><DataType>$5</DataType></Entry>"},
      {"DependOnSlot='\\+'", "DependOnSlot='1'"}};
  for (const auto& [from, to] : rules)
    text = std::regex_replace(text, std::regex(from), to);
  return text;
}

} // namespace traps
