#include "adapt/Check.h"

#include "descriptions/Reach.h"
#include "text/Text.h"

#include <algorithm>
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

Judgement judge(const Plan& plan, const Device* device, std::vector<Missing>* missing) {
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
        missing->push_back({&layout, &item});
    }
  }
  const bool clock = hasClock(*device) || !wantsClock(plan);
  if (!clock && missing)
    missing->emplace_back();
  judgement.whole = judgement.reachable == plan.entries && clock;
  return judgement;
}

std::string difference(const Plan& plan, const Device& device) {
  std::unordered_map<std::string, unsigned int> places;
  forEachEntry(device, [&](const SyncManager&, const Pdo&, const Entry& entry) {
    places.try_emplace(entry.name, entry.bitOffset);
  });
  for (std::size_t sm = 0; sm < plan.layout.size(); ++sm) {
    const auto& layout = plan.layout[sm];
    const auto* syncManager = findSyncManager(device, layout);
    if (!fits(layout, syncManager))
      return format("SM %u has %u bytes, the slave %u", layout.index,
                    syncManager ? (bitsOf(*syncManager) + 7) / 8 : 0, layout.bytes());
    for (const auto& pdo : plan.target[sm].pdos) {
      for (const auto& entry : pdo.entries) {
        const auto found = places.find(entry.name);
        if (found == places.end())
          return "\"" + entry.name + "\" is not there";
        for (const auto& piece : entry.pieces) {
          const auto place = layout.items[piece.item].start + piece.sourceBit;
          if (found->second + piece.bit != place)
            return format("bit %u of \"%s\" is at bit %u of SM %u, in the slave at bit %u", piece.bit,
                          entry.name.c_str(), found->second + piece.bit, layout.index, place);
        }
      }
    }
  }
  return {};
}

} // namespace igh_bus::adapt
