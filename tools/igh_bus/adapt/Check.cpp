#include "adapt/Check.h"

#include "text/Text.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace igh_bus::adapt {
namespace {

const SyncManager* findSyncManager(const Device& device, const SmLayout& layout) {
  for (const auto& syncManager : device.syncManagers) {
    if (syncManager.index == layout.index && syncManager.output == layout.output)
      return &syncManager;
  }
  return nullptr;
}

unsigned int bitsOf(const SyncManager& syncManager) {
  unsigned int bits = 0;
  for (const auto& pdo : syncManager.pdos) {
    for (const auto& entry : pdo.entries)
      bits += entry.bitLength;
  }
  return bits;
}

// Bits of each sync manager that a handle of the library moves: one of a name of its own, on an object that
// the master finds there, of a type that moves just its bits.
class Reach {
public:
  explicit Reach(const Device& device) {
    std::unordered_map<std::string, unsigned int> names;
    forEachEntry(device, [&](const SyncManager&, const Pdo&, const Entry& entry) { ++names[entry.name]; });
    std::set<std::pair<std::uint16_t, std::uint8_t>> objects;
    forEachEntry(device, [&](const SyncManager& syncManager, const Pdo&, const Entry& entry) {
      if (entry.gap() || !objects.emplace(entry.index, entry.subindex).second || names.at(entry.name) != 1)
        return;
      if (entry.bitOffset % 8 != 0 || convertedBytes(entry.type) * 8 != entry.bitLength)
        return;
      auto& bits = m_bits[syncManager.index];
      bits.resize(std::max<std::size_t>(bits.size(), entry.bitOffset + entry.bitLength));
      std::fill_n(bits.begin() + entry.bitOffset, entry.bitLength, true);
    });
  }

  bool covers(unsigned int syncManager, unsigned int start, unsigned int end) const {
    const auto found = m_bits.find(syncManager);
    if (found == m_bits.end() || end > found->second.size() || start == end)
      return false;
    return std::all_of(found->second.begin() + start, found->second.begin() + end,
                       [](bool bit) { return bit; });
  }

private:
  std::map<unsigned int, std::vector<bool>> m_bits;
};

// The library's place of every entry of a layout with so many bytes; a slave refuses another length.
bool fits(const SmLayout& layout, const SyncManager* syncManager) {
  return syncManager && (bitsOf(*syncManager) + 7) / 8 == layout.bytes();
}

bool hasClock(const Device& device) {
  const auto mode = device.clockModes.find("DC");
  return mode != device.clockModes.end() && mode->second.assignActivate != 0;
}

bool wantsClock(const Plan& plan) {
  const auto& modes = plan.source->modes;
  return std::any_of(modes.begin(), modes.end(),
                     [](const SourceMode& mode) { return mode.assignActivate != 0; });
}

} // namespace

Judgement judge(const Plan& plan, const Device* device, std::vector<std::string>* missing) {
  Judgement judgement;
  if (!device)
    return judgement;
  const Reach reach(*device);
  for (const auto& layout : plan.layout) {
    const bool fitting = fits(layout, findSyncManager(*device, layout));
    for (const auto& item : layout.items) {
      if (item.entry.gap())
        continue;
      if (fitting && reach.covers(layout.index, item.start, item.end()))
        ++judgement.reachable;
      else if (missing)
        missing->push_back(item.name);
    }
  }
  const bool clock = hasClock(*device) || !wantsClock(plan);
  if (!clock && missing)
    missing->emplace_back("distributed clocks");
  judgement.whole = judgement.reachable == plan.entries && clock;
  return judgement;
}

std::string difference(const Plan& plan, const Device& device) {
  for (std::size_t sm = 0; sm < plan.layout.size(); ++sm) {
    const auto& layout = plan.layout[sm];
    const auto* syncManager = findSyncManager(device, layout);
    if (!fits(layout, syncManager))
      return format("SM %u has %u bytes, the slave %u", layout.index,
                    syncManager ? (bitsOf(*syncManager) + 7) / 8 : 0, layout.bytes());
    for (const auto& pdo : plan.target[sm].pdos) {
      for (const auto& entry : pdo.entries) {
        const auto* found = findEntry(device, entry.name).entry;
        if (!found)
          return "\"" + entry.name + "\" is not there";
        for (const auto& piece : entry.pieces) {
          const auto place = layout.items[piece.item].start + piece.sourceBit;
          if (found->bitOffset + piece.bit != place)
            return format("bit %u of \"%s\" is at bit %u of SM %u, in the slave at bit %u", piece.bit,
                          entry.name.c_str(), found->bitOffset + piece.bit, layout.index, place);
        }
      }
    }
  }
  return {};
}

} // namespace igh_bus::adapt
