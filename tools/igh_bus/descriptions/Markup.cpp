#include "descriptions/Markup.h"

#include "ENIObject/ENIObject.h"
#include "XmlParser/XmlParser.h"
#include "descriptions/Dictionary.h"
#include "descriptions/Elements.h"

namespace igh_bus {
namespace {

class Document {
public:
  explicit Document(const std::string& path) : m_handle(xml_file_create()) {
    constexpr int READ_ONLY = 1;
    m_open = xml_file_open(m_handle, path.c_str(), READ_ONLY);
  }
  ~Document() { xml_file_destroy(m_handle); }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  const _XmlNode* root() const { return m_open ? xml_file_get_root(m_handle) : nullptr; }

private:
  xml_file_handle* m_handle;
  bool m_open = false;
};

// The loader's own rule for numbers.
std::uint32_t number(const std::string& text) {
  return CMasterENIObject::resolveENIValue(text.c_str());
}

bool flagOf(const _XmlNode* node, const char* name) {
  const auto* text = attributeOf(node, name);
  return text && (*text == "1" || *text == "true");
}

PdoMarkup pdoMarkup(const _XmlNode* node, bool output) {
  PdoMarkup pdo;
  pdo.index = static_cast<std::uint16_t>(number(textOf(firstChild(node, "Index"))));
  pdo.output = output;
  if (const auto* syncManager = attributeOf(node, "Sm")) {
    pdo.assigned = true;
    pdo.syncManager = number(*syncManager);
  }
  pdo.fixed = flagOf(node, "Fixed");
  for (const auto* exclude : xml_file_children(node, "Exclude"))
    pdo.excludes.push_back(static_cast<std::uint16_t>(number(exclude->value)));
  return pdo;
}

DeviceMarkup markupOf(const _XmlNode* device) {
  DeviceMarkup markup;
  const auto* mailbox = firstChild(device, "Mailbox");
  const auto* coe = mailbox ? firstChild(mailbox, "CoE") : nullptr;
  markup.coe = coe != nullptr;
  markup.pdoAssign = flagOf(coe, "PdoAssign");
  markup.pdoConfig = flagOf(coe, "PdoConfig");
  for (const auto* pdo : xml_file_children(device, "RxPdo"))
    markup.pdos.push_back(pdoMarkup(pdo, true));
  for (const auto* pdo : xml_file_children(device, "TxPdo"))
    markup.pdos.push_back(pdoMarkup(pdo, false));
  markup.objects = dictionaryOf(device);
  return markup;
}

struct DeviceNode {
  const _XmlNode* node;
  DeviceKey key;
  std::string typeName;
};

// Those that the loader can tell the identity of.
std::vector<DeviceNode> devicesOf(const _XmlNode* root, std::uint32_t vendorId) {
  std::vector<DeviceNode> devices;
  for (const auto* descriptions : xml_file_children(root, "Descriptions")) {
    for (const auto* list : xml_file_children(descriptions, "Devices")) {
      for (const auto* device : xml_file_children(list, "Device")) {
        const auto* type = firstChild(device, "Type");
        const auto* product = attributeOf(type, "ProductCode");
        const auto* revision = attributeOf(type, "RevisionNo");
        if (product && revision && !type->value.empty())
          devices.push_back({device, {vendorId, number(*product), number(*revision)}, type->value});
      }
    }
  }
  return devices;
}

// The loader's rule: within one product code, whichever device names the revision, itself included.
std::vector<HiddenDevice> hiddenDevices(const std::vector<DeviceNode>& devices) {
  std::map<DeviceKey, std::vector<std::pair<std::string, std::uint32_t>>> hiders;
  for (const auto& device : devices) {
    for (const auto* hideType : xml_file_children(device.node, "HideType")) {
      if (const auto* revision = attributeOf(hideType, "RevisionNo"))
        hiders[{device.key.vendorId, device.key.productCode, number(*revision)}].emplace_back(
            device.typeName, device.key.revision);
    }
  }
  std::vector<HiddenDevice> hidden;
  for (const auto& device : devices) {
    const auto found = hiders.find(device.key);
    if (found != hiders.end())
      hidden.push_back({device.typeName, device.key, found->second});
  }
  return hidden;
}

} // namespace

FileMarkup readMarkup(const std::string& path, std::uint32_t vendorId) {
  FileMarkup markup;
  const Document document(path);
  const auto devices = devicesOf(document.root(), vendorId);
  for (const auto& device : devices)
    markup.devices.try_emplace(device.key, markupOf(device.node));
  markup.hidden = hiddenDevices(devices);
  return markup;
}

} // namespace igh_bus
