#include "descriptions/Descriptions.h"

#include "text/Failure.h"
#include "text/Redirection.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <libxml/xmlerror.h>
#include <sys/stat.h>
#include <unordered_map>

namespace igh_bus {
namespace {

using LogLines = std::vector<std::pair<unsigned int, std::string>>;

LogLines* currentLog = nullptr;

bool capture(unsigned int level, const char* text) {
  std::string line = text;
  while (!line.empty() && line.back() == '\n')
    line.pop_back();
  if (currentLog)
    currentLog->emplace_back(level, line);
  return true;
}

// Keeps the first error of libxml2, which would otherwise print every one on several lines.
class XmlErrorCapture {
public:
  XmlErrorCapture() { xmlSetStructuredErrorFunc(this, receive); }
  ~XmlErrorCapture() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
  XmlErrorCapture(const XmlErrorCapture&) = delete;
  XmlErrorCapture& operator=(const XmlErrorCapture&) = delete;
  const std::string& first() const { return m_first; }

private:
  static void receive(void* context, xmlErrorPtr error) {
    auto& self = *static_cast<XmlErrorCapture*>(context);
    if (!self.m_first.empty() || error->level < XML_ERR_ERROR)
      return;
    std::string text = error->message ? error->message : "";
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    self.m_first = "line " + std::to_string(error->line) + ": " + text;
  }

  std::string m_first;
};

// Folds equal messages, keeping the order of their first appearance.
std::vector<Message> fold(const LogLines& lines) {
  std::vector<Message> messages;
  std::unordered_map<std::string, std::size_t> places;
  for (const auto& [level, text] : lines) {
    const auto [place, fresh] = places.try_emplace(std::to_string(level) + text, messages.size());
    if (fresh)
      messages.push_back({level, text});
    else
      ++messages[place->second].count;
  }
  return messages;
}

// Why a file was not loaded: its absence, the XML error, else the loader's last error message.
std::string failureReason(const std::string& path, const std::string& xmlError, const LogLines& lines) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0)
    return std::strerror(errno);
  if (S_ISDIR(status.st_mode))
    return "is a directory";
  if (!xmlError.empty())
    return xmlError;
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
    if (line->first == 0)
      return line->second;
  }
  return "cannot be loaded";
}

void takeVendor(const LogLines& lines, FileReport& report) {
  static constexpr char NAME_MARK[] = "Vendor name = ";
  for (const auto& [level, text] : lines) {
    unsigned int id = 0;
    const auto name = text.find(NAME_MARK);
    if (std::sscanf(text.c_str(), "Vendor id = 0x%X", &id) == 1 && name != std::string::npos) {
      report.vendorId = id;
      report.vendorName = text.substr(name + sizeof NAME_MARK - 1);
      return;
    }
  }
}

// The loader announces every device that it resolves, in the order of the file.
std::vector<DeviceKey> announcedDevices(const LogLines& lines) {
  std::vector<DeviceKey> keys;
  for (const auto& [level, text] : lines) {
    DeviceKey key;
    static constexpr char FORM[] =
        "ResolveDeviceDetail invoke for (VendorId = 0x%X, ProductCode = 0x%X, RevisionNo = 0x%X";
    if (std::sscanf(text.c_str(), FORM, &key.vendorId, &key.productCode, &key.revision) == 3)
      keys.push_back(key);
  }
  return keys;
}

// Fetches a text through the two-call protocol of the string readers.
template <typename Read> std::string fetch(Read read) {
  unsigned long size = 0;
  if (!read(nullptr, size) || size == 0)
    return {};
  std::string text(size, '\0');
  read(text.data(), size);
  text.resize(std::strlen(text.c_str()));
  return text;
}

std::vector<SyncManager> layoutOf(CSlaveENIObject& description) {
  std::vector<SyncManager> layout;
  unsigned int position = 0; // of the entry in the description's flat tables
  for (const ec_sync_info_t* sync = description.getSlaveSyncInfo(); sync && sync->index != 0xFF; ++sync) {
    SyncManager syncManager{sync->index, sync->dir == EC_DIR_OUTPUT, {}};
    unsigned int bits = 0;
    for (unsigned int p = 0; p < sync->n_pdos; ++p) {
      Pdo pdo{sync->pdos[p].index, {}};
      for (unsigned int e = 0; e < sync->pdos[p].n_entries; ++e, ++position) {
        const auto& info = sync->pdos[p].entries[e];
        pdo.entries.push_back({fetch([&](char* text, unsigned long& size) {
                                 return description.getPDOEntryName(position, text, size);
                               }),
                               fetch([&](char* text, unsigned long& size) {
                                 return description.getPDOEntryDataType(position, text, size);
                               }),
                               info.index, info.subindex, info.bit_length, bits});
        bits += info.bit_length;
      }
      syncManager.pdos.push_back(std::move(pdo));
    }
    layout.push_back(std::move(syncManager));
  }
  return layout;
}

Device deviceOf(CSlaveENIObject& description, DeviceMarkup markup) {
  Device device;
  device.key = {description.getVendorId(), description.getProductCode(), description.getRevisionCode()};
  device.typeName =
      fetch([&](char* text, unsigned long& size) { return description.getSmClassName(text, size); });
  device.slots = description.getSlotNumber();
  device.slotIndexIncrement = description.getSlotIndexIncrement();
  device.slotPdoIncrement = description.getSlotPdoIncrement();
  device.clockModes = description.getDcOpModes();
  device.syncManagers = layoutOf(description);
  device.markup = std::move(markup);
  return device;
}

} // namespace

Descriptions::Descriptions() : m_store(capture) {}

FileReport Descriptions::load(const std::string& path, bool withMarkup) {
  FileReport report;
  LogLines lines;
  const StdoutSilencer silence; // the XML layer prints its failures; the reason says the same
  const XmlErrorCapture xmlErrors;
  currentLog = &lines;
  report.loaded = m_store.insertENIFile(path.c_str(), false) != 0;
  currentLog = nullptr;
  report.messages = fold(lines);
  takeVendor(lines, report);
  if (!report.loaded) {
    report.reason = path + ": " + failureReason(path, xmlErrors.first(), lines);
    return report;
  }
  auto markup = withMarkup ? readMarkup(path, report.vendorId) : FileMarkup();
  report.hidden = std::move(markup.hidden);
  for (const auto& key : announcedDevices(lines)) {
    auto* description = m_store.findSlaveENIObject(key.vendorId, key.productCode, key.revision);
    if (description && m_known.insert(key).second)
      report.devices.push_back(deviceOf(*description, std::move(markup.devices[key])));
  }
  return report;
}

std::vector<Device> loadDevices(const std::vector<std::string>& paths, std::vector<HiddenDevice>* hidden) {
  Descriptions descriptions;
  std::vector<Device> devices;
  for (const auto& path : paths) {
    auto report = descriptions.load(path);
    if (!report.loaded)
      throw Failure(usageError, report.reason);
    std::move(report.devices.begin(), report.devices.end(), std::back_inserter(devices));
    if (hidden)
      std::move(report.hidden.begin(), report.hidden.end(), std::back_inserter(*hidden));
  }
  return devices;
}

const Device* findDevice(const std::vector<Device>& devices, const DeviceKey& key) {
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const Device& device) {
    return !(device.key < key) && !(key < device.key);
  });
  return found == devices.end() ? nullptr : &*found;
}

} // namespace igh_bus
