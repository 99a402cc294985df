#include "descriptions/Reach.h"

#include <algorithm>
#include <unordered_map>

namespace igh_bus {
namespace {

unsigned int movedBits(const Entry& entry) {
  return convertedBytes(entry.type) * 8;
}

// Where the last entry of the sync manager ends, in whole bytes: what lies behind it is not moved.
unsigned int movableBits(const SyncManager& syncManager) {
  unsigned int end = 0;
  for (const auto& pdo : syncManager.pdos) {
    for (const auto& entry : pdo.entries)
      end = entry.gap() ? end : std::max(end, entry.bitOffset + entry.bitLength);
  }
  return (end + 7) / 8 * 8;
}

void mark(std::vector<bool>& bits, const Entry& entry) {
  bits.resize(std::max<std::size_t>(bits.size(), entry.bitOffset + movedBits(entry)));
  std::fill_n(bits.begin() + entry.bitOffset, movedBits(entry), true);
}

} // namespace

Reach::Reach(const Device& device) {
  std::unordered_map<std::string, unsigned int> names;
  forEachEntry(device, [&](const SyncManager&, const Pdo&, const Entry& entry) { ++names[entry.name]; });
  std::set<std::pair<std::uint16_t, std::uint8_t>> objects; // the master finds the first of an object
  forEachEntry(device, [&](const SyncManager& syncManager, const Pdo&, const Entry& entry) {
    if (entry.gap() || !objects.emplace(entry.index, entry.subindex).second || names.at(entry.name) != 1 ||
        entry.bitOffset % 8 != 0 || movedBits(entry) == 0)
      return;
    m_usable.insert(&entry);
    if (movedBits(entry) == entry.bitLength)
      mark(m_bits[syncManager.index], entry);
  });
  for (const auto& syncManager : device.syncManagers)
    openWindows(syncManager);
}

void Reach::openWindows(const SyncManager& syncManager) {
  const auto end = movableBits(syncManager);
  auto& bits = m_bits[syncManager.index];
  for (const auto& pdo : syncManager.pdos) {
    for (const auto& entry : pdo.entries) {
      const auto last = entry.bitOffset + movedBits(entry);
      if (!usable(entry) || movedBits(entry) <= entry.bitLength || last > end)
        continue;
      bits.resize(std::max<std::size_t>(bits.size(), last));
      if (std::any_of(bits.begin() + entry.bitOffset, bits.begin() + last, [](bool bit) { return bit; }))
        continue;
      mark(bits, entry);
      m_windows.insert(&entry);
    }
  }
}

bool Reach::covers(unsigned int syncManager, unsigned int start, unsigned int end) const {
  const auto found = m_bits.find(syncManager);
  if (found == m_bits.end() || end > found->second.size() || start == end)
    return false;
  return std::all_of(found->second.begin() + start, found->second.begin() + end,
                     [](bool bit) { return bit; });
}

} // namespace igh_bus
