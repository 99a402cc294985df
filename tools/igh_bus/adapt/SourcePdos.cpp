#include "adapt/SourcePdos.h"

#include "adapt/Numbers.h"
#include "text/Text.h"

namespace igh_bus::adapt {
namespace {

constexpr unsigned int MOST_BITS = 1486 * 8; // that a sync manager can have in one frame

SourceEntry readEntry(const _XmlNode* node, Changes& changes, const std::string& pdo) {
  NumberReader numbers(changes);
  SourceEntry entry;
  const auto* index = firstChild(node, "Index");
  entry.name = childText(node, "Name");
  const std::string where = pdo + " \"" + entry.name + "\" ";
  entry.type = childText(node, "DataType");
  entry.index = static_cast<std::uint16_t>(numbers.read(textOf(index), where + "Index"));
  entry.subindex = static_cast<std::uint8_t>(numbers.read(childText(node, "SubIndex"), where + "SubIndex"));
  entry.bits = numbers.read(childText(node, "BitLen"), where + "BitLen");
  entry.ofSlot = flagOf(index, "DependOnSlot");
  if (entry.bits > MOST_BITS) {
    changes.push_back({"number", where + "BitLen", std::to_string(entry.bits),
                       std::to_string(entry.bits & 0xFFU),
                       "no frame holds so many bits; the library reads it so"});
    entry.bits &= 0xFFU;
  }
  return entry;
}

SourcePdo readPdo(const _XmlNode* node, bool output, Changes& changes) {
  NumberReader numbers(changes);
  SourcePdo pdo;
  const auto* index = firstChild(node, "Index");
  pdo.name = childText(node, "Name");
  pdo.output = output;
  const std::string where = std::string(output ? "RxPdo" : "TxPdo") + " \"" + pdo.name + "\"";
  pdo.index = static_cast<std::uint16_t>(numbers.read(textOf(index), where + " Index"));
  pdo.ofSlot = flagOf(index, "DependOnSlot");
  const auto text = attributeText(node, "Sm");
  if (!text.empty())
    pdo.syncManager = numbers.read(text, where + " Sm");
  pdo.fixed = flagOf(node, "Fixed");
  pdo.mandatory = flagOf(node, "Mandatory");
  for (const auto* exclude : xml_file_children(node, "Exclude"))
    pdo.excludes.emplace_back(static_cast<std::uint16_t>(numbers.read(exclude->value, where + " Exclude")),
                              flagOf(exclude, "DependOnSlot"));
  const std::string place = format("PDO 0x%04X", unsigned{pdo.index});
  for (const auto* entry : xml_file_children(node, "Entry"))
    pdo.entries.push_back(readEntry(entry, changes, place));
  return pdo;
}

SourceMode readMode(const _XmlNode* node, Changes& changes) {
  NumberReader numbers(changes);
  SourceMode mode;
  mode.name = childText(node, "Name");
  mode.description = childText(node, "Desc");
  const auto number = [&](const char* name) {
    return numbers.read(childText(node, name), "OpMode \"" + mode.name + "\" " + name);
  };
  mode.assignActivate = static_cast<std::uint16_t>(number("AssignActivate"));
  mode.cycle0 = number("CycleTimeSync0");
  mode.shift0 = static_cast<std::int32_t>(number("ShiftTimeSync0"));
  mode.cycle1 = number("CycleTimeSync1");
  mode.shift1 = static_cast<std::int32_t>(number("ShiftTimeSync1"));
  mode.factor0 = attributeText(firstChild(node, "CycleTimeSync0"), "Factor");
  mode.factor1 = attributeText(firstChild(node, "CycleTimeSync1"), "Factor");
  for (const auto* syncManager : xml_file_children(node, "Sm")) {
    if (firstChild(syncManager, "Pdo") == nullptr)
      continue;
    auto& list = mode.pdos[numbers.read(attributeText(syncManager, "No"), "OpMode/Sm No")];
    for (const auto* pdo : xml_file_children(syncManager, "Pdo"))
      list.push_back(static_cast<std::uint16_t>(numbers.read(pdo->value, "OpMode/Sm/Pdo")));
  }
  return mode;
}

std::optional<std::uint32_t> optionalNumber(const _XmlNode* node, const char* name, NumberReader& numbers) {
  const auto text = attributeText(node, name);
  if (text.empty())
    return std::nullopt;
  return numbers.read(text, std::string("Slot ") + name);
}

SourceSlot readSlot(const _XmlNode* node, NumberReader& numbers) {
  SourceSlot slot;
  slot.name = childText(node, "Name");
  slot.maxInstances = optionalNumber(node, "MaxInstances", numbers).value_or(1);
  slot.minInstances = optionalNumber(node, "MinInstances", numbers).value_or(slot.maxInstances == 1 ? 1 : 0);
  slot.indexIncrement = optionalNumber(node, "SlotIndexIncrement", numbers);
  slot.pdoIncrement = optionalNumber(node, "SlotPdoIncrement", numbers);
  for (const auto* ident : xml_file_children(node, "ModuleIdent")) {
    slot.idents.push_back(numbers.read(ident->value, "ModuleIdent"));
    if (flagOf(ident, "Default") && !slot.standard)
      slot.standard = slot.idents.back();
  }
  for (const auto* one : xml_file_children(node, "ModuleClass"))
    slot.classes.push_back(childText(one, "Class"));
  return slot;
}

} // namespace

std::vector<SourcePdo> readPdos(const _XmlNode* node, Changes& numbers) {
  std::vector<SourcePdo> pdos;
  for (const auto* pdo : xml_file_children(node, "RxPdo"))
    pdos.push_back(readPdo(pdo, true, numbers));
  for (const auto* pdo : xml_file_children(node, "TxPdo"))
    pdos.push_back(readPdo(pdo, false, numbers));
  return pdos;
}

std::vector<SourceMode> readModes(const _XmlNode* device, Changes& numbers) {
  std::vector<SourceMode> modes;
  for (const auto* dc : xml_file_children(device, "Dc")) {
    for (const auto* mode : xml_file_children(dc, "OpMode"))
      modes.push_back(readMode(mode, numbers));
  }
  return modes;
}

void readSlots(const _XmlNode* node, SourceDevice& device) {
  NumberReader numbers(device.numbers);
  for (const auto* slots : xml_file_children(node, "Slots")) {
    device.hasSlots = true;
    device.slotIndexIncrement =
        numbers.read(attributeText(slots, "SlotIndexIncrement"), "SlotIndexIncrement");
    device.slotPdoIncrement = numbers.read(attributeText(slots, "SlotPdoIncrement"), "SlotPdoIncrement");
    for (const auto* slot : xml_file_children(slots, "Slot"))
      device.slots.push_back(readSlot(slot, numbers));
  }
}

} // namespace igh_bus::adapt
