#include "BenchBus.h"

#include <algorithm>
#include <fstream>

namespace bench_bus {

namespace {

// Entry types take turns; half of a slave's entries are outputs, half inputs.
struct EntryType {
  const char* name;
  std::uint8_t bytes;
};
constexpr EntryType TYPES[] = {{"USINT", 1}, {"INT", 2}, {"DINT", 4}, {"UINT", 2}};

const EntryType& typeOf(unsigned int entry) {
  return TYPES[entry % 4];
}

// Entries first to last of one direction; the object index and the PDO index follow from the entry's number.
sim::SyncManager syncManager(std::uint8_t index, bool output, unsigned int first, unsigned int last) {
  constexpr unsigned int ENTRIES_PER_PDO = 100;
  sim::SyncManager manager{index, output ? sim::Direction::output : sim::Direction::input, {}};
  for (unsigned int i = first; i < last; ++i) {
    const auto pdoIndex = static_cast<std::uint16_t>((output ? 0x1600U : 0x1A00U) + i / ENTRIES_PER_PDO);
    if (manager.pdos.empty() || manager.pdos.back().index != pdoIndex) {
      manager.pdos.push_back({pdoIndex, {}});
    }
    const unsigned int object = (output ? 0x7000U : 0x6000U) + i / 200;
    manager.pdos.back().entries.push_back({static_cast<std::uint16_t>(object),
                                           static_cast<std::uint8_t>(i % 200 + 1),
                                           static_cast<std::uint8_t>(typeOf(i).bytes * 8)});
  }
  return manager;
}

} // namespace

// A sync manager holds at most 1486 bytes, so a slave with many entries has several of them.
std::vector<sim::SyncManager> layout(unsigned int entries) {
  constexpr unsigned int ENTRIES_PER_SYNC_MANAGER = 500;
  const unsigned int outputs = (entries + 1) / 2;
  std::vector<sim::SyncManager> managers;
  std::uint8_t index = 2;
  for (const bool output : {true, false}) {
    const unsigned int count = output ? outputs : entries - outputs;
    for (unsigned int first = 0; first < count; first += ENTRIES_PER_SYNC_MANAGER) {
      managers.push_back(
          syncManager(index++, output, first, std::min(count, first + ENTRIES_PER_SYNC_MANAGER)));
    }
  }
  return managers;
}

std::string entryName(bool output, unsigned int entry) {
  return (output ? "out " : "in ") + std::to_string(entry);
}

void writeDescription(const std::string& path, const std::vector<sim::SyncManager>& managers) {
  std::ofstream xml(path);
  xml << "<EtherCATInfo><Vendor><Id>" << VENDOR
      << "</Id><Name>Bench</Name></Vendor><Descriptions><Devices><Device>"
      << "<Type ProductCode=\"" << PRODUCT << "\" RevisionNo=\"1\">Bench</Type>";
  unsigned int numbers[] = {0, 0};
  for (const sim::SyncManager& manager : managers) {
    const bool output = manager.direction == sim::Direction::output;
    unsigned int& number = numbers[output ? 1 : 0];
    for (const sim::Pdo& pdo : manager.pdos) {
      xml << (output ? "<RxPdo" : "<TxPdo") << " Fixed=\"true\" Sm=\"" << int{manager.index} << "\"><Index>"
          << pdo.index << "</Index>";
      for (const sim::Entry& entry : pdo.entries) {
        xml << "<Entry><Index>" << entry.index << "</Index><SubIndex>" << int{entry.subindex}
            << "</SubIndex><BitLen>" << int{entry.bitLength} << "</BitLen><Name>" << entryName(output, number)
            << "</Name><DataType>" << typeOf(number).name << "</DataType></Entry>";
        ++number;
      }
      xml << (output ? "</RxPdo>" : "</TxPdo>");
    }
  }
  xml << "</Device></Devices></Descriptions></EtherCATInfo>\n";
}

void buildBus(unsigned int index, unsigned int slaves, const std::vector<sim::SyncManager>& managers) {
  sim::Slave slave;
  slave.vendorId = VENDOR;
  slave.productCode = PRODUCT;
  slave.revisionNumber = 1;
  slave.name = "Bench";
  slave.defaultMapping = managers;
  sim::Bus& bus = sim::bus(index);
  bus.setTiming(sim::Timing::fast);
  bus.setClimbCycles(1);
  for (unsigned int i = 0; i < slaves; ++i) {
    bus.addSlave(slave);
  }
}

} // namespace bench_bus
