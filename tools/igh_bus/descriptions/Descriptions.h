// The description files of a command, loaded as the library will load them, with every message kept.
#ifndef IGH_BUS_DESCRIPTIONS_H
#define IGH_BUS_DESCRIPTIONS_H

#include "descriptions/Device.h"
#include "descriptions/Markup.h"

#include <set>

namespace igh_bus {

struct Message {
  unsigned int level = 0;
  std::string text;
  unsigned int count = 1; // how often it came
};

struct FileReport {
  bool loaded = false;
  std::string reason; // one line, when it was not loaded
  std::uint32_t vendorId = 0;
  std::string vendorName;
  std::vector<Message> messages; // repeated texts once, in order of the first
  std::vector<Device> devices;   // those that this file added, in its order
  std::vector<HiddenDevice> hidden;
};

class Descriptions {
public:
  Descriptions();
  Descriptions(const Descriptions&) = delete;
  Descriptions& operator=(const Descriptions&) = delete;

  // Adds one file. As in the library, modules of earlier files serve it, and the first description of a
  // device wins. Not to be called from two threads: the loader's log function has no context.
  // Without markup it is read only once; then hidden devices are not told.
  FileReport load(const std::string& path, bool withMarkup = true);

private:
  CMasterENIObject m_store;
  std::set<DeviceKey> m_known;
};

// All devices of these files, and those that a file takes out. Throws Failure(usageError) for the first file
// that does not load.
std::vector<Device> loadDevices(const std::vector<std::string>& paths,
                                std::vector<HiddenDevice>* hidden = nullptr);

// Null when none of the devices has this key.
const Device* findDevice(const std::vector<Device>& devices, const DeviceKey& key);

} // namespace igh_bus

#endif
