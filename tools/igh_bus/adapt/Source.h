// The makers' files in plain records: everything that is there, nothing chosen yet.
#ifndef IGH_BUS_ADAPT_SOURCE_H
#define IGH_BUS_ADAPT_SOURCE_H

#include "adapt/Changes.h"
#include "adapt/Document.h"
#include "descriptions/Device.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace igh_bus::adapt {

struct SourceEntry {
  std::string name;
  std::string type;
  std::uint16_t index = 0; // 0 is a gap
  std::uint8_t subindex = 0;
  unsigned int bits = 0;
  bool ofSlot = false; // the index grows from slot to slot
  bool gap() const { return index == 0; }
};

struct SourcePdo {
  std::uint16_t index = 0;
  std::string name;
  bool output = false;
  std::optional<unsigned int> syncManager;
  bool fixed = false;
  bool mandatory = false;
  bool ofSlot = false;
  unsigned int slot = 0;                                // 1-based; 0 for a PDO of the device itself
  std::vector<std::pair<std::uint16_t, bool>> excludes; // index, and whether it grows from slot to slot
  std::vector<SourceEntry> entries;
};

struct SourceMode {
  std::string name;
  std::string description;
  std::uint16_t assignActivate = 0;
  std::uint32_t cycle0 = 0;
  std::int32_t shift0 = 0;
  std::uint32_t cycle1 = 0;
  std::int32_t shift1 = 0;
  std::string factor0; // as written; empty for none
  std::string factor1;
  std::map<unsigned int, std::vector<std::uint16_t>> pdos; // of the sync managers that the mode lists
};

struct SourceSlot {
  std::string name;
  unsigned int minInstances = 1;
  unsigned int maxInstances = 1;
  std::optional<std::uint32_t> indexIncrement; // else those of all slots
  std::optional<std::uint32_t> pdoIncrement;
  std::vector<std::uint32_t> idents;
  std::optional<std::uint32_t> standard; // marked as the default
  std::vector<std::string> classes;
};

struct SourceModule {
  std::uint32_t ident = 0;
  std::string name;
  std::string group; // of PDOs that are aligned together; empty or "0" for none
  std::vector<SourcePdo> pdos;
  Changes numbers;
  const _XmlNode* node = nullptr;
};

struct SourceDevice {
  DeviceKey key;
  std::string typeName;
  std::string name;
  std::size_t file = 0;
  bool hidden = false;
  bool coe = false;
  bool pdoAssign = false;
  bool pdoConfig = false;
  std::vector<std::string> syncManagers; // what each is for: "MBoxOut", "Outputs" ...
  std::vector<SourcePdo> pdos;
  std::vector<SourceMode> modes;
  bool hasSlots = false;
  std::uint32_t slotIndexIncrement = 0;
  std::uint32_t slotPdoIncrement = 0;
  std::vector<SourceSlot> slots;
  Changes numbers;
  const _XmlNode* node = nullptr;

  // The master writes the entries of this PDO into the slave, so that they must be those it knows.
  bool masterWrites(const SourcePdo& pdo) const { return coe && pdoConfig && !pdo.fixed; }
};

struct SourceFile {
  std::string path;
  bool ofDevices = false; // false: of modules only, which the library does not read
  std::uint32_t vendorId = 0;
  std::string vendorName;
  std::vector<SourceModule> modules;
  std::shared_ptr<Document> document; // what the nodes point into
};

struct Sources {
  std::vector<SourceFile> files;
  std::vector<SourceDevice> devices; // in the order of files and devices
  std::vector<std::string> missing;  // files that others refer to and that are not there

  // A module that goes into a slot of this device: of its own file before others of its vendor. Null for
  // none.
  const SourceModule* findModule(const SourceDevice& device, std::uint32_t ident) const;
};

// Throws Failure(usageError) for the first file that cannot be used.
Sources readSources(const std::vector<std::string>& paths);

} // namespace igh_bus::adapt

#endif
