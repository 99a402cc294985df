// The slaves of a bus file.
#include "busfile/BusFileParts.h"
#include "drive/DriveObjects.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace ethercat_simulation {

namespace {

constexpr std::size_t MOST_SLAVES = 65535;
constexpr std::uint64_t LAST_SYNC_MANAGER = 15;
constexpr std::uint64_t LONGEST_TIME = 3'600'000'000; // microseconds
constexpr double STRONGEST_DRIVE = 1e12;              // counts/s^2

Entry readEntry(const JsonNode& node) {
  node.expectObject({"index", "subindex", "bit_length"});
  Entry entry;
  entry.index = node.get<std::uint16_t>("index", 0, LIMIT16);
  entry.subindex = node.get<std::uint8_t>("subindex", 0, LIMIT8, 0);
  entry.bitLength = node.get<std::uint8_t>("bit_length", 0, LIMIT8);
  return entry;
}

bool readFlag(const JsonNode& node, const char* key, bool missing) {
  return node.has(key) ? node.at(key).flag() : missing;
}

// Descriptions have entries without bits and PDOs without index, and the real master takes them.
Pdo readPdo(const JsonNode& node) {
  node.expectObject({"index", "entries", "fixed", "excludes"});
  Pdo pdo;
  pdo.index = node.get<std::uint16_t>("index", 0, LIMIT16);
  pdo.fixed = readFlag(node, "fixed", pdo.fixed);
  if (node.has("entries")) {
    for (const JsonNode& entry : node.at("entries").elements()) {
      pdo.entries.push_back(readEntry(entry));
    }
  }
  if (node.has("excludes")) {
    for (const JsonNode& excluded : node.at("excludes").elements()) {
      pdo.excludes.push_back(static_cast<std::uint16_t>(excluded.number(0, LIMIT16)));
    }
  }
  return pdo;
}

std::vector<Pdo> readPdos(const JsonNode& node) {
  std::vector<Pdo> pdos;
  for (const JsonNode& element : node.elements()) {
    pdos.push_back(readPdo(element));
  }
  return pdos;
}

SyncManager readSyncManager(const JsonNode& node) {
  node.expectObject({"index", "direction", "pdos"});
  SyncManager manager;
  manager.index = node.get<std::uint8_t>("index", 0, LAST_SYNC_MANAGER);
  const JsonNode direction = node.at("direction");
  const std::string name = direction.text();
  if (name != "output" && name != "input") {
    direction.fail("must be \"output\" or \"input\"");
  }
  manager.direction = name == "output" ? Direction::output : Direction::input;
  if (node.has("pdos")) {
    manager.pdos = readPdos(node.at("pdos"));
  }
  return manager;
}

std::vector<SyncManager> readSyncManagers(const JsonNode& node) {
  std::vector<SyncManager> managers;
  for (const JsonNode& element : node.elements()) {
    managers.push_back(readSyncManager(element));
    const auto isSame = [&](const SyncManager& other) { return other.index == managers.back().index; };
    if (std::count_if(managers.begin(), managers.end(), isSame) > 1) {
      element.at("index").fail("another sync manager of the slave has this index");
    }
  }
  return managers;
}

// "01 02 FF": pairs of hexadecimal digits, with or without blanks between them.
std::vector<std::uint8_t> readBytes(const JsonNode& node) {
  std::vector<std::uint8_t> bytes;
  const std::string text = node.text();
  const auto isHex = [&](std::size_t place) {
    return place < text.size() && std::isxdigit(static_cast<unsigned char>(text[place])) != 0;
  };
  for (std::size_t place = 0; place < text.size();) {
    if (text[place] == ' ') {
      ++place;
      continue;
    }
    if (!isHex(place) || !isHex(place + 1)) {
      node.fail("must be pairs of hexadecimal digits");
    }
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(place, 2), nullptr, 16)));
    place += 2;
  }
  return bytes;
}

std::vector<std::uint8_t> readValue(const JsonNode& node) {
  const JsonNode type = node.at("type");
  const std::string name = type.text();
  const std::size_t width = name == "USINT" ? 1 : name == "UINT" ? 2 : name == "UDINT" ? 4 : 0;
  if (width == 0) {
    type.fail("must be \"USINT\", \"UINT\" or \"UDINT\"");
  }
  const auto value = node.get<std::uint32_t>("value", 0, LIMIT32 >> 8 * (4 - width));
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < width; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
  }
  return bytes;
}

Object readObject(const JsonNode& node) {
  node.expectObject({"index", "subindex", "bytes", "value", "type", "read_only"});
  Object object;
  object.index = node.get<std::uint16_t>("index", 0, LIMIT16);
  object.subindex = node.get<std::uint8_t>("subindex", 0, LIMIT8, 0);
  if (node.has("bytes") == node.has("value")) {
    node.fail("must have either \"bytes\", or \"value\" and \"type\"");
  }
  object.bytes = node.has("bytes") ? readBytes(node.at("bytes")) : readValue(node);
  object.readOnly = readFlag(node, "read_only", object.readOnly);
  return object;
}

std::vector<Object> readObjects(const JsonNode& node) {
  std::vector<Object> objects;
  std::set<std::pair<std::uint16_t, std::uint8_t>> places;
  for (const JsonNode& element : node.elements()) {
    objects.push_back(readObject(element));
    if (!places.insert({objects.back().index, objects.back().subindex}).second) {
      element.fail("another object of the slave has this index and subindex");
    }
  }
  return objects;
}

SlaveModel readModel(const JsonNode& node) {
  const std::string name = node.text();
  if (name != "loopback" && name != "counter" && name != "drive") {
    node.fail("must be \"loopback\", \"counter\" or \"drive\"");
  }
  return name == "loopback"  ? SlaveModel::loopback
         : name == "counter" ? SlaveModel::counter
                             : SlaveModel::drive;
}

DriveParameters readDrive(const JsonNode& node) {
  node.expectObject({"cycle_us", "lag_us", "rated_acceleration", "watchdog_us"});
  DriveParameters drive;
  drive.cycleUs = node.get("cycle_us", 1, LONGEST_TIME, drive.cycleUs);
  drive.lagUs = node.get("lag_us", 0, LONGEST_TIME, drive.lagUs);
  drive.watchdogUs = node.get("watchdog_us", 0, LONGEST_TIME, drive.watchdogUs);
  if (node.has("rated_acceleration")) {
    drive.ratedAcceleration = node.at("rated_acceleration").real(1, STRONGEST_DRIVE);
  }
  return drive;
}

// A drive knows the length of its own objects.
void checkDriveObjects(const Slave& slave, const JsonNode& objects) {
  const std::vector<JsonNode> elements = objects.elements();
  for (std::size_t i = 0; i < slave.objects.size(); ++i) {
    const Object& object = slave.objects[i];
    const std::size_t size = driveObjectSize(object.index, object.subindex);
    if (size != 0 && size != object.bytes.size()) {
      elements[i].fail("must have " + std::to_string(size) + " bytes in a drive");
    }
  }
}

void readProcessData(const JsonNode& node, Slave& slave) {
  if (node.has("sync_managers")) {
    slave.defaultMapping = readSyncManagers(node.at("sync_managers"));
  }
  if (node.has("further_pdos")) {
    slave.furtherPdos = readPdos(node.at("further_pdos"));
  }
  slave.checksLengths = readFlag(node, "checks_lengths", slave.checksLengths);
  slave.coe = readFlag(node, "coe", node.has("objects") || slave.model == SlaveModel::drive);
  slave.pdoAssign = readFlag(node, "pdo_assign", slave.pdoAssign);
  slave.pdoConfig = readFlag(node, "pdo_config", slave.pdoConfig);
}

} // namespace

Slave readSlave(const JsonNode& node) {
  node.expectObject({"vendor_id", "product_code", "revision", "serial", "alias", "name", "model", "drive",
                     "configuration_us", "distributed_clocks", "sync_managers", "further_pdos",
                     "checks_lengths", "coe", "pdo_assign", "pdo_config", "objects"});
  Slave slave;
  slave.vendorId = node.get<std::uint32_t>("vendor_id", 0, LIMIT32);
  slave.productCode = node.get<std::uint32_t>("product_code", 0, LIMIT32);
  slave.revisionNumber = node.get<std::uint32_t>("revision", 0, LIMIT32, 0);
  slave.serialNumber = node.get<std::uint32_t>("serial", 0, LIMIT32, 0);
  slave.alias = node.get<std::uint16_t>("alias", 0, LIMIT16, 0);
  if (node.has("name")) {
    slave.name = node.at("name").text();
  }
  if (node.has("model")) {
    slave.model = readModel(node.at("model"));
  }
  if (node.has("drive")) {
    if (slave.model != SlaveModel::drive) {
      node.at("drive").fail("belongs to the model \"drive\"");
    }
    slave.drive = readDrive(node.at("drive"));
  }
  slave.configurationUs = node.get<std::uint32_t>("configuration_us", 0, LONGEST_TIME, slave.configurationUs);
  slave.distributedClocks = readFlag(node, "distributed_clocks", slave.distributedClocks);
  readProcessData(node, slave);
  if (node.has("objects")) {
    slave.objects = readObjects(node.at("objects"));
    if (slave.model == SlaveModel::drive) {
      checkDriveObjects(slave, node.at("objects"));
    }
  }
  return slave;
}

std::vector<Slave> readSlaves(const JsonNode& node) {
  const std::vector<JsonNode> elements = node.elements();
  if (elements.size() > MOST_SLAVES) {
    node.fail("more than 65535 slaves");
  }
  std::vector<Slave> slaves;
  std::set<std::uint16_t> aliases;
  for (const JsonNode& element : elements) {
    slaves.push_back(readSlave(element));
    if (slaves.back().alias != 0 && !aliases.insert(slaves.back().alias).second) {
      element.at("alias").fail("another slave has this alias");
    }
  }
  return slaves;
}

} // namespace ethercat_simulation
