#include "Maker.h"

#include "XmlParser/XmlParser.h"

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>

namespace maker {

namespace sim = ethercat_simulation;

namespace {

std::vector<const _XmlNode*> under(const _XmlNode* from, const std::string& path) {
  std::vector<const _XmlNode*> nodes{from};
  std::istringstream names(path);
  for (std::string name; std::getline(names, name, '/');) {
    std::vector<const _XmlNode*> next;
    for (const auto* node : nodes)
      for (const auto* child : xml_file_children(node, name.c_str()))
        next.push_back(child);
    nodes = std::move(next);
  }
  return nodes;
}

std::string text(const _XmlNode* from, const std::string& path) {
  const auto nodes = under(from, path);
  return nodes.empty() ? "" : nodes[0]->value;
}

std::string attribute(const _XmlNode* node, const std::string& name, const std::string& otherwise = "") {
  for (const auto& one : node->attributes)
    if (one.name == name)
      return one.value;
  return otherwise;
}

bool flag(const _XmlNode* node, const std::string& name) {
  const auto value = attribute(node, name);
  return value == "1" || value == "true";
}

// #x1A, 0x1A, #X1A, #x0x1A, 26 and 0026 are 26.
std::uint32_t number(const std::string& text) {
  const auto x = text.find_last_of("xX");
  const auto digits = x == std::string::npos ? text.find_first_not_of('#') : x + 1;
  return digits >= text.size() ? 0
                               : static_cast<std::uint32_t>(
                                     std::strtoul(&text[digits], nullptr, x == std::string::npos ? 10 : 16));
}

std::uint16_t shifted(const _XmlNode* index, std::uint32_t shift) {
  return static_cast<std::uint16_t>(number(index->value) + (flag(index, "DependOnSlot") ? shift : 0));
}

std::uint16_t indexOf(const _XmlNode* node, std::uint32_t shift) {
  const auto indices = under(node, "Index");
  return indices.empty() ? std::uint16_t{0} : shifted(indices[0], shift);
}

void addPdos(Device& device, const _XmlNode* from, std::uint32_t indexShift = 0, std::uint32_t pdoShift = 0) {
  for (const bool output : {true, false}) {
    for (const auto* node : under(from, output ? "RxPdo" : "TxPdo")) {
      Pdo pdo{indexOf(node, pdoShift),
              output,
              static_cast<int>(number(attribute(node, "Sm", "-1"))),
              flag(node, "Fixed"),
              flag(node, "Mandatory"),
              {},
              {}};
      for (const auto* exclude : under(node, "Exclude"))
        pdo.excludes.push_back(shifted(exclude, pdoShift));
      for (const auto* entry : under(node, "Entry"))
        pdo.entries.push_back({indexOf(entry, indexShift),
                               static_cast<std::uint8_t>(number(text(entry, "SubIndex"))),
                               number(text(entry, "BitLen")), text(entry, "Name"), text(entry, "DataType")});
      device.pdos.push_back(std::move(pdo));
    }
  }
}

using ModuleNodes = std::map<std::uint32_t, const _XmlNode*>;

unsigned int countAt(const _XmlNode* slot, const char* name) {
  return std::max(1U, number(attribute(slot, name, "1")));
}

// A slot element stands for as many slots as it must, and for as many more as are filled beyond those.
void plug(Device& device, const _XmlNode* node, const ModuleNodes& known, const Modules& modules) {
  const auto found = modules.find(device.key);
  const auto plugged = found == modules.end() ? std::vector<std::uint32_t>() : found->second;
  const auto elements = under(node, "Slots/Slot");
  std::size_t needed = 0;
  for (const auto* element : elements)
    needed += countAt(element, "MinInstances");
  std::size_t slot = 0;
  std::uint32_t indexShift = 0;
  std::uint32_t pdoShift = 0;
  for (const auto* element : elements) {
    const auto increment = [&](const char* name) {
      return number(attribute(element, name, attribute(under(node, "Slots")[0], name, "0")));
    };
    const auto least = countAt(element, "MinInstances");
    for (unsigned int i = 0; i < least || (i < countAt(element, "MaxInstances") && needed < plugged.size());
         ++i) {
      needed += i < least ? 0 : 1;
      const auto ident = plugged.empty()         ? number(text(element, "ModuleIdent"))
                         : slot < plugged.size() ? plugged[slot]
                                                 : 0;
      if (const auto module = known.find(ident); module != known.end())
        addPdos(device, module->second, indexShift, pdoShift);
      indexShift += increment("SlotIndexIncrement");
      pdoShift += increment("SlotPdoIncrement");
      ++slot;
    }
  }
  device.modular = !device.pdos.empty();
}

Device deviceOf(std::uint32_t vendor, const _XmlNode* node, const ModuleNodes& known,
                const Modules& modules) {
  const auto* type = under(node, "Type").at(0);
  Device device;
  device.key = {vendor, number(attribute(type, "ProductCode")), number(attribute(type, "RevisionNo"))};
  device.type = type->value;
  for (const auto* coe : under(node, "Mailbox/CoE")) {
    device.hasCoe = true;
    device.assignable = flag(coe, "PdoAssign");
    device.mappable = flag(coe, "PdoConfig");
  }
  for (const auto* word : under(node, "Dc/OpMode/AssignActivate"))
    device.clocked = device.clocked || number(word->value) != 0;
  plug(device, node, known, modules);
  addPdos(device, node);
  const auto isOutput = [](const Pdo& pdo) { return pdo.output; };
  const bool sends = std::any_of(device.pdos.begin(), device.pdos.end(), isOutput);
  device.managers = device.hasCoe ? std::array{3U, 2U} : std::array{sends ? 1U : 0U, 0U};
  for (const auto& pdo : device.pdos)
    if (pdo.manager >= 0)
      device.managers[pdo.output] = static_cast<unsigned int>(pdo.manager);
  unsigned int manager = 0;
  for (const auto* element : under(node, "Sm")) {
    if (element->value == "Outputs" || element->value == "Inputs")
      device.managers[element->value == "Outputs"] = manager;
    ++manager;
  }
  return device;
}

bool excludeEachOther(const Pdo& one, const Pdo& other) {
  const auto names = [](const Pdo& from, const Pdo& to) {
    return std::count(from.excludes.begin(), from.excludes.end(), to.index) != 0;
  };
  return names(one, other) || names(other, one);
}

// An entry that is longer than the records of the master can say is several of them.
sim::Pdo simulated(const Pdo& pdo) {
  sim::Pdo made{pdo.index, {}, pdo.fixed, pdo.excludes};
  for (const auto& entry : pdo.entries)
    for (unsigned int left = entry.bits, part = 0; left > 0; left -= part) {
      part = std::min(left, 248U);
      made.entries.push_back({entry.index, entry.subindex, static_cast<std::uint8_t>(part)});
    }
  return made;
}

} // namespace

unsigned int Device::managerOf(const Pdo& pdo) const {
  return pdo.manager >= 0 ? static_cast<unsigned int>(pdo.manager) : managers[pdo.output];
}

std::vector<Device> devicesOf(const std::vector<std::string>& files, const Modules& modules) {
  const auto close = [](xml_file_handle* handle) { xml_file_destroy(handle); };
  std::vector<std::unique_ptr<xml_file_handle, decltype(close)>> handles;
  ModuleNodes known;
  for (const auto& file : files) {
    handles.emplace_back(xml_file_create(), close);
    xml_file_open(handles.back().get(), file.c_str(), 1);
    for (const char* path : {"Descriptions/Modules/Module", "Modules/Module"})
      for (const auto* module : under(xml_file_get_root(handles.back().get()), path))
        for (const auto* type : under(module, "Type"))
          known.emplace(number(attribute(type, "ModuleIdent")), module);
  }
  std::vector<Device> devices;
  std::set<Key> seen;
  for (const auto& handle : handles) {
    const auto* root = xml_file_get_root(handle.get());
    for (const auto* node : under(root, "Descriptions/Devices/Device")) {
      auto device = deviceOf(number(text(root, "Vendor/Id")), node, known, modules);
      if (seen.insert(device.key).second)
        devices.push_back(std::move(device));
    }
  }
  return devices;
}

Assignment ownAssignment(const Device& device) {
  std::set<const Pdo*> chosen;
  const auto chooseWhere = [&](auto condition) {
    for (const auto& pdo : device.pdos)
      if (!pdo.entries.empty() && condition(pdo) &&
          std::none_of(chosen.begin(), chosen.end(),
                       [&](const Pdo* other) { return other != &pdo && excludeEachOther(pdo, *other); }))
        chosen.insert(&pdo);
  };
  chooseWhere([&](const Pdo& pdo) {
    return pdo.mandatory && (pdo.manager >= 0 || device.assignable || !pdo.excludes.empty());
  });
  chooseWhere([](const Pdo& pdo) { return pdo.manager >= 0; });
  // Where nobody can tell it, it has something.
  for (const bool peaceful : {true, false})
    chooseWhere([&](const Pdo& pdo) {
      return !device.assignable && pdo.excludes.empty() == peaceful &&
             std::none_of(chosen.begin(), chosen.end(),
                          [&](const Pdo* other) { return other->output == pdo.output; });
    });
  Assignment assignment;
  for (const auto& pdo : device.pdos)
    if (chosen.count(&pdo) != 0)
      assignment[device.managerOf(pdo)].push_back(&pdo);
  for (auto& [manager, pdos] : assignment)
    if (device.modular)
      std::stable_sort(pdos.begin(), pdos.end(),
                       [](const Pdo* one, const Pdo* other) { return one->index < other->index; });
  return assignment;
}

sim::Slave slaveOf(const Device& device) {
  sim::Slave slave;
  slave.vendorId = device.key[0];
  slave.productCode = device.key[1];
  slave.revisionNumber = device.key[2];
  slave.coe = device.hasCoe;
  slave.pdoAssign = device.assignable;
  slave.pdoConfig = device.mappable;
  auto own = ownAssignment(device);
  std::set<unsigned int> made;
  for (const auto& pdo : device.pdos) {
    const auto manager = device.managerOf(pdo);
    const auto& assigned = own[manager];
    if (made.insert(manager).second) {
      slave.defaultMapping.push_back({static_cast<std::uint8_t>(manager),
                                      pdo.output ? sim::Direction::output : sim::Direction::input,
                                      {}});
      for (const auto* one : assigned)
        slave.defaultMapping.back().pdos.push_back(simulated(*one));
    }
    if (std::count(assigned.begin(), assigned.end(), &pdo) == 0)
      slave.furtherPdos.push_back(simulated(pdo));
  }
  return slave;
}

std::string Place::text() const {
  char text[16];
  std::snprintf(text, sizeof text, "0x%04X:%02X", unsigned{entry->index}, unsigned{entry->subindex});
  return text;
}

std::vector<Place> placesOf(const Assignment& assignment) {
  std::vector<Place> places;
  std::array<std::size_t, 2> next{}; // bit of the inputs, of the outputs; sync managers start with a byte
  for (const auto& [manager, pdos] : assignment) {
    for (const auto* pdo : pdos) {
      for (const auto& entry : pdo->entries) {
        if (entry.index != 0)
          places.push_back({&entry, pdo, next[pdo->output]});
        next[pdo->output] += entry.bits;
      }
    }
    for (auto& bit : next)
      bit = (bit + 7) / 8 * 8;
  }
  return places;
}

} // namespace maker
