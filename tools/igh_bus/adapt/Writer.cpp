#include "adapt/Writer.h"

#include "adapt/Telling.h"
#include "text/Text.h"

#include <set>

namespace igh_bus::adapt {
namespace {

std::string decimal(std::int64_t number) {
  return std::to_string(number);
}

class Builder {
public:
  explicit Builder(Document& document) : m_document(document) {}

  _XmlNode* add(_XmlNode* parent, const char* name, const std::string& value = "") {
    return m_document.append(parent, name, value);
  }
  static void set(_XmlNode* node, const char* name, const std::string& value) {
    xml_file_append_attribute(node, name, value.c_str());
  }
  void addDevice(_XmlNode* devices, const Plan& plan);

private:
  void addMailbox(_XmlNode* device, const SourceDevice& source);
  void addSlots(_XmlNode* device, const Plan& plan);
  void addPdo(_XmlNode* device, const TargetSm& sm, const TargetPdo& pdo);
  void addModes(_XmlNode* device, const Plan& plan);
  void addMode(_XmlNode* dc, const SourceMode& mode, const std::string& name);

  Document& m_document;
};

void Builder::addMailbox(_XmlNode* device, const SourceDevice& source) {
  if (!source.coe)
    return;
  auto* coe = add(add(device, "Mailbox"), "CoE");
  set(coe, "PdoAssign", source.pdoAssign ? "1" : "0");
  set(coe, "PdoConfig", source.pdoConfig ? "1" : "0");
}

// The modules are placed already; the slots stay, as the library tells their number.
void Builder::addSlots(_XmlNode* device, const Plan& plan) {
  if (!plan.source->hasSlots)
    return;
  auto* slots = add(device, "Slots");
  set(slots, "SlotPdoIncrement", decimal(plan.source->slotPdoIncrement));
  set(slots, "SlotIndexIncrement", decimal(plan.source->slotIndexIncrement));
  for (const auto& module : plan.modules)
    add(add(slots, "Slot"), "Name", module.empty() ? "empty" : module);
}

void Builder::addPdo(_XmlNode* device, const TargetSm& sm, const TargetPdo& pdo) {
  auto* node = add(device, sm.output ? "RxPdo" : "TxPdo");
  if (pdo.fixed)
    set(node, "Fixed", "true");
  set(node, "Sm", decimal(sm.index));
  add(node, "Index", format("#x%04X", unsigned{pdo.index}));
  add(node, "Name", pdo.name);
  for (const auto& entry : pdo.entries) {
    auto* child = add(node, "Entry");
    add(child, "Index", format("#x%04X", unsigned{entry.index}));
    add(child, "SubIndex", decimal(entry.subindex));
    add(child, "BitLen", decimal(entry.bits));
    add(child, "Name", entry.name);
    if (!entry.gap())
      add(child, "DataType", entry.type);
  }
}

void Builder::addMode(_XmlNode* dc, const SourceMode& mode, const std::string& name) {
  auto* node = add(dc, "OpMode");
  add(node, "Name", name);
  add(node, "Desc", mode.description.empty() ? mode.name : mode.description);
  add(node, "AssignActivate", format("#x%04X", unsigned{mode.assignActivate}));
  add(node, "CycleTimeSync0", decimal(mode.cycle0));
  add(node, "ShiftTimeSync0", decimal(mode.shift0));
  add(node, "CycleTimeSync1", decimal(mode.cycle1));
  add(node, "ShiftTimeSync1", decimal(mode.shift1));
}

// Of two modes of one name the library takes the first.
void Builder::addModes(_XmlNode* device, const Plan& plan) {
  if (plan.source->modes.empty())
    return;
  auto* dc = add(device, "Dc");
  if (plan.clock)
    addMode(dc, *plan.clock, "DC");
  for (const auto& mode : plan.source->modes) {
    if (&mode != plan.clock)
      addMode(dc, mode, mode.name == "DC" ? "DC (not used)" : mode.name);
  }
}

void Builder::addDevice(_XmlNode* devices, const Plan& plan) {
  auto* device = add(devices, "Device");
  auto* type = add(device, "Type", plan.source->typeName);
  set(type, "ProductCode", format("#x%08X", plan.key.productCode));
  set(type, "RevisionNo", format("#x%08X", plan.key.revision));
  std::string comment = "igh_bus adapt changed: " + countKinds(plan.changes);
  for (const auto& open : plan.open)
    comment += "; open: " + open;
  add(device, "Comment", comment);
  add(device, "Name", plan.source->name);
  for (const auto& syncManager : plan.source->syncManagers)
    add(device, "Sm", syncManager);
  for (const bool output : {true, false}) {
    for (std::size_t sm = 0; sm < plan.target.size(); ++sm) {
      for (std::size_t i = 0; i < plan.target[sm].pdos.size(); ++i) {
        const auto& pdo = plan.target[sm].pdos[i];
        const bool emptied = pdo.entries.empty() && !plan.layout[sm].pdos[i].entries.empty();
        if (plan.target[sm].output == output && !emptied)
          addPdo(device, plan.target[sm], pdo);
      }
    }
  }
  addMailbox(device, *plan.source);
  addModes(device, plan);
  addSlots(device, plan);
}

} // namespace

void buildDocument(Document& document, const SourceFile& vendor, const std::vector<const Plan*>& plans) {
  Builder builder(document);
  auto* root = builder.add(nullptr, "EtherCATInfo");
  Builder::set(root, "Version", "1.0");
  builder.add(
      root, "Comment",
      "Written by igh_bus adapt for libigh_master, from the description files of the makers. Not for "
      "configuration tools: entries are joined, cut and named so that this library reaches them all.");
  auto* vendorNode = builder.add(root, "Vendor");
  builder.add(vendorNode, "Id", format("#x%08X", vendor.vendorId));
  builder.add(vendorNode, "Name", vendor.vendorName);
  auto* devices = builder.add(builder.add(root, "Descriptions"), "Devices");
  for (const auto* plan : plans)
    builder.addDevice(devices, *plan);
}

} // namespace igh_bus::adapt
