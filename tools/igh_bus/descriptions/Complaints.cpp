#include "descriptions/Complaints.h"

#include "descriptions/Reach.h"
#include "text/Text.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace igh_bus {
namespace {

std::string place(const SyncManager& syncManager, const Entry& entry) {
  return format("SM %u  %s  \"%s\"", unsigned{syncManager.index}, objectText(entry).c_str(),
                entry.name.c_str());
}

// Collects the entries, gaps left out, for which `detail` gives a text.
template <typename Detail>
void collect(std::vector<Complaint>& complaints, const Device& device, const std::string& reason,
             Detail detail) {
  Complaint complaint{reason, {}};
  forEachEntry(device, [&](const SyncManager& syncManager, const Pdo&, const Entry& entry) {
    const std::string text = entry.gap() ? std::string() : detail(syncManager, entry);
    if (!text.empty())
      complaint.places.push_back(place(syncManager, entry) + ": " + text);
  });
  if (!complaint.places.empty())
    complaints.push_back(std::move(complaint));
}

void checkTypes(std::vector<Complaint>& complaints, const Device& device, const Reach& reach) {
  const auto reached = [&](const SyncManager& syncManager, const Entry& entry) {
    return reach.covers(syncManager.index, entry.bitOffset, entry.bitOffset + entry.bitLength);
  };
  collect(complaints, device, "type not convertible: a handle can be made, but no value moves",
          [&](const SyncManager& syncManager, const Entry& entry) {
            return convertedBytes(entry.type) != 0 || reached(syncManager, entry) ? ""
                   : entry.type.empty()                                           ? "no type"
                                                                                  : entry.type;
          });
  collect(complaints, device, "entry off a byte boundary: whole bytes move, from the byte that it starts in",
          [&](const SyncManager& syncManager, const Entry& entry) {
            return entry.bitOffset % 8 == 0 || reached(syncManager, entry)
                       ? ""
                       : format("starts at bit %u of byte %u", entry.bitOffset % 8, entry.bitOffset / 8);
          });
  collect(complaints, device,
          "wider than its bit length: reading and writing it takes neighbouring bits along",
          [&](const SyncManager&, const Entry& entry) {
            const unsigned int bits = convertedBytes(entry.type) * 8;
            return bits <= entry.bitLength || reach.isWindow(entry)
                       ? ""
                       : format("%s moves %u bits, the entry has %u", entry.type.c_str(), bits,
                                unsigned{entry.bitLength});
          });
  collect(complaints, device, "narrower than its bit length: the upper bits of the entry are out of reach",
          [](const SyncManager&, const Entry& entry) {
            const unsigned int bits = convertedBytes(entry.type) * 8;
            return bits == 0 || bits >= entry.bitLength
                       ? ""
                       : format("%s moves %u bits, the entry has %u", entry.type.c_str(), bits,
                                unsigned{entry.bitLength});
          });
}

void checkIndexes(std::vector<Complaint>& complaints, const Device& device) {
  Complaint complaint{
      "index 0, or written in a way that is not read (#x1A, 0x1A and 26 are): taken for gaps, no value moves",
      {}};
  forEachEntry(device, [&](const SyncManager& syncManager, const Pdo& pdo, const Entry& entry) {
    if (entry.unread())
      complaint.places.push_back(format("SM %u  PDO 0x%04X  \"%s\"", unsigned{syncManager.index},
                                        unsigned{pdo.index}, entry.name.c_str()));
  });
  if (!complaint.places.empty())
    complaints.push_back(std::move(complaint));
}

void checkNames(std::vector<Complaint>& complaints, const Device& device) {
  std::unordered_map<std::string, const Entry*> last;
  forEachEntry(device,
               [&](const SyncManager&, const Pdo&, const Entry& entry) { last[entry.name] = &entry; });
  collect(complaints, device, "name taken twice: only the last entry of that name is reachable",
          [&](const SyncManager&, const Entry& entry) {
            const auto* reachable = last.at(entry.name);
            return reachable == &entry ? ""
                                       : "hidden by " + (reachable->gap() ? "a gap" : objectText(*reachable));
          });
}

// A device without any mode that switches clocks on has none to be missed.
void checkClock(std::vector<Complaint>& complaints, const Device& device) {
  const auto mode = device.clockModes.find("DC");
  const bool named = mode != device.clockModes.end();
  const bool active = std::any_of(device.clockModes.begin(), device.clockModes.end(),
                                  [](const auto& one) { return one.second.assignActivate != 0; });
  if (named ? mode->second.assignActivate != 0 : !active)
    return;
  complaints.push_back(
      {std::string(named ? "clock mode \"DC\" with assign-activate 0" : "no clock mode named \"DC\"") +
           ": the device runs without distributed clocks",
       {}});
}

void checkLeftOut(std::vector<Complaint>& complaints, const Device& device) {
  std::string rows[2];
  for (const auto& pdo : device.markup.pdos) {
    auto& row = rows[pdo.output ? 0 : 1];
    if (!pdo.assigned)
      row += (row.empty() ? pdo.output ? "RxPdo " : "TxPdo " : ", ") + format("0x%04X", unsigned{pdo.index});
  }
  Complaint complaint{"no sync manager: these PDOs are left out", {}};
  for (const auto& row : rows) {
    if (!row.empty())
      complaint.places.push_back(row);
  }
  if (!complaint.places.empty())
    complaints.push_back(std::move(complaint));
}

void checkExclusions(std::vector<Complaint>& complaints, const Device& device) {
  std::map<std::pair<bool, std::uint16_t>, const PdoMarkup*> assigned;
  for (const auto& pdo : device.markup.pdos) {
    if (pdo.assigned)
      assigned.try_emplace({pdo.output, pdo.index}, &pdo);
  }
  Complaint complaint{
      "PDOs that exclude each other are all assigned to one sync manager: a real slave refuses that", {}};
  for (const auto& pdo : device.markup.pdos) {
    for (const auto other : pdo.excludes) {
      const auto found = assigned.find({pdo.output, other});
      if (pdo.assigned && found != assigned.end() && found->second->syncManager == pdo.syncManager)
        complaint.places.push_back(
            format("SM %u  0x%04X excludes 0x%04X", pdo.syncManager, pdo.index, other));
    }
  }
  if (!complaint.places.empty())
    complaints.push_back(std::move(complaint));
}

} // namespace

std::string objectText(const Entry& entry) {
  return format("0x%04X:%02X", unsigned{entry.index}, unsigned{entry.subindex});
}

std::vector<Complaint> complaintsAbout(const Device& device) {
  std::vector<Complaint> complaints;
  if (device.entryCount() + device.unreadCount() == 0)
    complaints.push_back({"no process data: there is nothing to read or write", {}});
  checkIndexes(complaints, device);
  checkTypes(complaints, device, Reach(device));
  checkNames(complaints, device);
  if (device.entryCount() != 0)
    checkClock(complaints, device);
  checkLeftOut(complaints, device);
  checkExclusions(complaints, device);
  return complaints;
}

} // namespace igh_bus
