#include "Descriptions.h"

#include "Traps.h"

namespace descriptions {

std::string element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name.substr(0, name.find(' ')) + ">";
}

std::string device(const std::string& body, const std::string& type) {
  return element("Device", element("Type " + type, "*/DEV") + body);
}

std::string file(const std::string& devices, const std::string& modules) {
  return element("EtherCATInfo",
                 "<Vendor><Id>#x9</Id><Name>M</Name></Vendor>" +
                     element("Descriptions", element("Devices", devices) + element("Modules", modules)));
}

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

std::string pdos(const std::string& lines) {
  const std::regex shortForm("([TR]x)([^<{]*)(\\{[^\n]*)\n?");
  return traps::expand(std::regex_replace(lines, shortForm, "<$1Pdo$2>$3</$1Pdo>"));
}

const std::string modular = R"(<Mailbox><CoE/></Mailbox><Slots SlotPdoIncrement="1" SlotIndexIncrement="#x10">
<Slot MinInstances="1" MaxInstances="2"><ModuleIdent>#x20</ModuleIdent><ModuleIdent Default="1">#x21</ModuleIdent></Slot>
<Slot SlotPdoIncrement="4" SlotIndexIncrement="#x40"><ModuleIdent>#x20</ModuleIdent></Slot>
<Slot MinInstances="0"><ModuleIdent>#x22</ModuleIdent></Slot></Slots>)";
const std::string moduleList = traps::expand(R"(<Module><Type ModuleIdent="#x20">AI</Type>
<TxPdo Sm="3">{+1A00 }[+6000:1:8:USINT:V]</TxPdo></Module><Module><Type ModuleIdent="#x21">AS</Type>
<TxPdo Sm="3">{+1A00 }[+6000:1:8:SINT:V]</TxPdo></Module>)");

} // namespace descriptions
