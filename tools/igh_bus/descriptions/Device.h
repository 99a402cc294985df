// One described device in plain records: what the loader made of it, plus what only its XML tells.
#ifndef IGH_BUS_DEVICE_H
#define IGH_BUS_DEVICE_H

#include "ENIObject/ENIObject.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace igh_bus {

struct Entry {
  std::string name;
  std::string type;
  std::uint16_t index = 0; // 0 is a gap
  std::uint8_t subindex = 0;
  std::uint8_t bitLength = 0;
  unsigned int bitOffset = 0; // in the sync manager, whose entries are packed to the bit
  bool gap() const { return index == 0; }
  bool unread() const { return gap() && !name.empty() && !type.empty(); } // no gap is meant by that
};

struct Pdo {
  std::uint16_t index = 0;
  std::vector<Entry> entries;
};

struct SyncManager {
  std::uint8_t index = 0;
  bool output = false; // seen from the master
  std::vector<Pdo> pdos;
};

// A PDO as its XML has it; the loader keeps neither those without sync manager nor the exclusions.
struct PdoMarkup {
  std::uint16_t index = 0;
  bool output = false;
  bool assigned = false; // has a sync manager
  std::uint32_t syncManager = 0;
  bool fixed = false;
  std::vector<std::uint16_t> excludes;
};

// One sub-index of an object.
struct DescribedObject {
  std::uint16_t index = 0;
  std::uint8_t subindex = 0;
  std::string name;
  std::string type; // empty: not told
};

// What of a device's XML the loader reads past.
struct DeviceMarkup {
  bool coe = false;       // has a mailbox with objects
  bool pdoAssign = false; // and lets its PDOs be assigned
  bool pdoConfig = false; // and their entries be chosen
  std::vector<PdoMarkup> pdos;
  std::vector<DescribedObject> objects; // of its object dictionary, in the order of the file
};

struct DeviceKey {
  std::uint32_t vendorId = 0;
  std::uint32_t productCode = 0;
  std::uint32_t revision = 0;
  bool operator<(const DeviceKey& other) const {
    return std::tie(vendorId, productCode, revision) <
           std::tie(other.vendorId, other.productCode, other.revision);
  }
};

struct Device {
  DeviceKey key;
  std::string typeName;
  std::uint32_t slots = 0;
  std::uint32_t slotIndexIncrement = 0;
  std::uint32_t slotPdoIncrement = 0;
  CSlaveENIObject::DC_OP_MODES clockModes;
  std::vector<SyncManager> syncManagers;
  DeviceMarkup markup;

  std::size_t entryCount() const; // gaps left out
  std::size_t unreadCount() const;
};

// The entry that the library reaches under this name (the last one wins), and whether it is an output.
struct NamedEntry {
  const Entry* entry = nullptr; // null: no such name
  bool output = false;
};
NamedEntry findEntry(const Device& device, const std::string& name);

// Every sub-index that the device's dictionary tells of, or else its PDOs.
std::vector<DescribedObject> describedObjects(const Device& device);

// Bytes that the library moves for an entry of this type, 0 when it has no conversion.
unsigned int convertedBytes(const std::string& type);

// Calls visit(syncManager, pdo, entry) for every entry, gaps included, in the order of the process image.
template <typename Visit> void forEachEntry(const Device& device, Visit visit) {
  for (const auto& syncManager : device.syncManagers) {
    for (const auto& pdo : syncManager.pdos) {
      for (const auto& entry : pdo.entries)
        visit(syncManager, pdo, entry);
    }
  }
}

} // namespace igh_bus

#endif
