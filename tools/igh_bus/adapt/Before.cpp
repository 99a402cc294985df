#include "adapt/Before.h"

#include "adapt/ScratchFile.h"
#include "descriptions/Descriptions.h"

#include <algorithm>
#include <string_view>

namespace igh_bus::adapt {
namespace {

// Elements under which the library finds something, or that markup beyond it is told from.
bool counts(std::string_view name) {
  static constexpr std::string_view NAMES[] = {"Vendor",
                                               "Id",
                                               "Name",
                                               "Descriptions",
                                               "Modules",
                                               "Module",
                                               "Devices",
                                               "Device",
                                               "Type",
                                               "Slots",
                                               "Slot",
                                               "ModuleIdent",
                                               "RxPdo",
                                               "TxPdo",
                                               "Index",
                                               "Entry",
                                               "SubIndex",
                                               "BitLen",
                                               "DataType",
                                               "Dc",
                                               "OpMode",
                                               "Mailbox",
                                               "CoE",
                                               "HideType",
                                               "Exclude",
                                               "AssignActivate",
                                               "CycleTimeSync0",
                                               "ShiftTimeSync0",
                                               "CycleTimeSync1",
                                               "ShiftTimeSync1"};
  return std::find(std::begin(NAMES), std::end(NAMES), name) != std::end(NAMES);
}

// What counts lies no deeper than root/Descriptions/Devices/Device/RxPdo/Entry/Name.
constexpr int DEEPEST = 8;

void copy(Document& document, const _XmlNode& from, _XmlNode* parent, int depth) {
  auto* node = document.append(parent, from.name.c_str(), from.value);
  for (const auto& attribute : from.attributes)
    xml_file_append_attribute(node, attribute.name.c_str(), attribute.value.c_str());
  for (const auto* child = from.firstChild; child && depth < DEEPEST; child = child->nextSibling) {
    if (counts(child->name))
      copy(document, *child, node, depth + 1);
  }
}

} // namespace

std::vector<Device> loadedBefore(const Sources& sources, bool withMarkup) {
  Descriptions descriptions;
  std::vector<Device> devices;
  for (const auto& file : sources.files) {
    if (!file.ofDevices)
      continue;
    const ScratchFile scratch;
    Document document;
    document.create(scratch.path());
    copy(document, *file.document->root(), nullptr, 0);
    document.store();
    auto report = descriptions.load(scratch.path(), withMarkup);
    std::move(report.devices.begin(), report.devices.end(), std::back_inserter(devices));
  }
  return devices;
}

} // namespace igh_bus::adapt
