#include "adapt/Source.h"

#include "adapt/Numbers.h"
#include "adapt/SourcePdos.h"
#include "descriptions/Descriptions.h"
#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <libxml/xmlerror.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace igh_bus::adapt {
namespace {

// libxml2 would print its errors on several lines; the one that counts is asked for afterwards.
class QuietXml {
public:
  QuietXml() { xmlSetStructuredErrorFunc(nullptr, ignore); }
  ~QuietXml() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
  QuietXml(const QuietXml&) = delete;
  QuietXml& operator=(const QuietXml&) = delete;

private:
  static void ignore(void*, xmlErrorPtr) {}
};

SourceModule readModule(const _XmlNode* node) {
  SourceModule module;
  const auto* type = firstChild(node, "Type");
  NumberReader numbers(module.numbers);
  module.ident = numbers.read(attributeText(type, "ModuleIdent"), "ModuleIdent");
  module.group = attributeText(type, "ModulePdoGroup");
  module.name = textOf(type).empty() ? childText(node, "Name") : textOf(type);
  module.pdos = readPdos(node, module.numbers);
  module.node = node;
  return module;
}

// Files of modules have them without Descriptions, and some even without the list.
void readModules(const _XmlNode* parent, std::vector<SourceModule>& modules) {
  for (const auto* list : xml_file_children(parent, "Modules")) {
    for (const auto* module : xml_file_children(list, "Module"))
      modules.push_back(readModule(module));
  }
  for (const auto* module : xml_file_children(parent, "Module"))
    modules.push_back(readModule(module));
}

// In their own language first: English.
std::string englishName(const _XmlNode* device) {
  for (const auto* name : xml_file_children(device, "Name")) {
    const auto language = attributeText(name, "LcId");
    if (language.empty() || language == "1033")
      return name->value;
  }
  return childText(device, "Name");
}

// The library passes over a device whose type says nothing.
std::string typeNameOf(const _XmlNode* type, SourceDevice& device) {
  auto text = textOf(type);
  if (!text.empty())
    return text;
  auto name = device.name.empty() ? format("0x%08X", device.key.productCode) : device.name;
  device.numbers.push_back({"name", "Type", "", name, "the library passes over a device without one"});
  return name;
}

SourceDevice readDevice(const _XmlNode* node, std::uint32_t vendorId, std::size_t file) {
  SourceDevice device;
  NumberReader numbers(device.numbers);
  const auto* type = firstChild(node, "Type");
  device.key.vendorId = vendorId;
  device.key.productCode = numbers.read(attributeText(type, "ProductCode"), "ProductCode");
  device.key.revision = numbers.read(attributeText(type, "RevisionNo"), "RevisionNo");
  if (!attributeOf(type, "RevisionNo"))
    device.numbers.push_back({"number", "RevisionNo", "none", "0", "the library passes over such a device"});
  device.name = englishName(node);
  device.typeName = typeNameOf(type, device);
  device.file = file;
  device.node = node;
  const auto* mailbox = firstChild(node, "Mailbox");
  const auto* coe = firstChild(mailbox, "CoE");
  device.coe = coe != nullptr;
  device.pdoAssign = flagOf(coe, "PdoAssign");
  device.pdoConfig = flagOf(coe, "PdoConfig");
  for (const auto* syncManager : xml_file_children(node, "Sm"))
    device.syncManagers.push_back(syncManager->value);
  device.pdos = readPdos(node, device.numbers);
  device.modes = readModes(node, device.numbers);
  readSlots(node, device);
  return device;
}

std::set<std::uint32_t> hiddenRevisions(const _XmlNode* device) {
  std::set<std::uint32_t> revisions;
  for (const auto* hideType : xml_file_children(device, "HideType")) {
    if (const auto* revision = attributeOf(hideType, "RevisionNo"))
      revisions.insert(plainNumber(*revision).value_or(0));
  }
  return revisions;
}

// Devices of which the file tells who they are, hidden ones marked: one names the revisions of its product.
void readDevices(const _XmlNode* root, std::uint32_t vendorId, std::size_t file, Sources& sources) {
  std::set<std::pair<std::uint32_t, std::uint32_t>> hidden;
  const auto first = static_cast<std::ptrdiff_t>(sources.devices.size());
  for (const auto* descriptions : xml_file_children(root, "Descriptions")) {
    for (const auto* list : xml_file_children(descriptions, "Devices")) {
      for (const auto* node : xml_file_children(list, "Device")) {
        const auto* type = firstChild(node, "Type");
        if (!attributeOf(type, "ProductCode"))
          continue;
        sources.devices.push_back(readDevice(node, vendorId, file));
        for (const auto revision : hiddenRevisions(node))
          hidden.emplace(sources.devices.back().key.productCode, revision);
      }
    }
  }
  std::for_each(sources.devices.begin() + first, sources.devices.end(), [&](SourceDevice& device) {
    device.hidden = hidden.count({device.key.productCode, device.key.revision}) != 0;
  });
}

// Files of modules that this one refers to, beside it.
std::vector<std::string> references(const _XmlNode* root, const std::string& path) {
  std::vector<std::string> paths;
  for (const auto* reference : xml_file_children(root, "InfoReference")) {
    std::string name = reference->value;
    std::replace(name.begin(), name.end(), '\\', '/');
    const auto file = std::filesystem::path(name).filename();
    if (!file.empty())
      paths.push_back((std::filesystem::path(path).parent_path() / file).string());
  }
  return paths;
}

[[noreturn]] void refuse(const std::string& path) {
  auto report = Descriptions().load(path); // says why
  throw Failure(usageError, report.loaded ? path + ": cannot be used" : report.reason);
}

// The references that the file makes.
std::vector<std::string> readFile(const std::string& path, Sources& sources) {
  SourceFile file;
  file.path = path;
  file.document = std::make_shared<Document>();
  const auto* root = file.document->read(path) ? file.document->root() : nullptr;
  file.ofDevices = root && root->name == "EtherCATInfo";
  if (!root || (!file.ofDevices && root->name != "EtherCATModule"))
    refuse(path);
  const auto* vendor = firstChild(root, "Vendor");
  file.vendorId = plainNumber(childText(vendor, "Id")).value_or(0);
  file.vendorName = childText(vendor, "Name");
  if (file.ofDevices && file.vendorId == 0)
    refuse(path);
  readModules(root, file.modules);
  for (const auto* descriptions : xml_file_children(root, "Descriptions"))
    readModules(descriptions, file.modules);
  if (file.ofDevices)
    readDevices(root, file.vendorId, sources.files.size(), sources);
  auto further = references(root, path);
  sources.files.push_back(std::move(file));
  return further;
}

} // namespace

const SourceModule* Sources::findModule(const SourceDevice& device, std::uint32_t ident) const {
  const auto in = [&](const SourceFile& file) -> const SourceModule* {
    const auto found = std::find_if(file.modules.begin(), file.modules.end(),
                                    [&](const SourceModule& module) { return module.ident == ident; });
    return found == file.modules.end() ? nullptr : &*found;
  };
  if (const auto* own = in(files[device.file]))
    return own;
  for (const auto& file : files) {
    const bool sameVendor = file.vendorId == device.key.vendorId || file.vendorId == 0;
    if (const auto* other = sameVendor ? in(file) : nullptr)
      return other;
  }
  return nullptr;
}

Sources readSources(const std::vector<std::string>& paths) {
  const StdoutSilencer silence; // the XML layer prints its failures; the reason says the same
  const QuietXml quiet;
  Sources sources;
  std::set<std::string> seen(paths.begin(), paths.end());
  std::vector<std::string> referred;
  for (const auto& path : paths) {
    for (auto& further : readFile(path, sources)) {
      if (seen.insert(further).second)
        referred.push_back(std::move(further));
    }
  }
  for (const auto& path : referred) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error))
      readFile(path, sources);
    else
      sources.missing.push_back(path);
  }
  return sources;
}

} // namespace igh_bus::adapt
