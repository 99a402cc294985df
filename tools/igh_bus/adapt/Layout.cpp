#include "adapt/Layout.h"

#include "adapt/Names.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int MOST_MAPPED = 255; // bits: a mapping has eight bits for the length

bool strictlyAscending(const std::vector<SourcePdo>& pdos) {
  return std::adjacent_find(pdos.begin(), pdos.end(), [](const SourcePdo& one, const SourcePdo& next) {
           return one.index >= next.index;
         }) == pdos.end();
}

// The master assigns PDOs in the library's order, by index. Otherwise the slave has the order of its
// description; what modules bring stands by index there too.
void order(SmLayout& layout, const SourceDevice& device, std::vector<std::string>& open) {
  const auto any = [&](auto condition) {
    return std::any_of(layout.pdos.begin(), layout.pdos.end(), condition);
  };
  const bool byIndex = layout.assigned || any([](const SourcePdo& pdo) { return pdo.slot != 0; });
  const bool written = any([&](const SourcePdo& pdo) { return device.masterWrites(pdo); });
  if (!strictlyAscending(layout.pdos) && !byIndex && written)
    open.push_back(format("SM %u: the slave's PDOs do not stand in the order of their indices, which the "
                          "library takes, and the master writes what they hold",
                          layout.index));
  if (byIndex || written)
    std::stable_sort(layout.pdos.begin(), layout.pdos.end(),
                     [](const SourcePdo& one, const SourcePdo& other) { return one.index < other.index; });
  layout.ascending = strictlyAscending(layout.pdos);
}

void spread(SmLayout& layout, const SourceDevice& device, std::vector<std::string>& open) {
  unsigned int bit = 0;
  for (std::size_t number = 0; number < layout.pdos.size(); ++number) {
    const auto& pdo = layout.pdos[number];
    for (const auto& entry : pdo.entries) {
      if (entry.bits > MOST_MAPPED && device.masterWrites(pdo))
        open.push_back(format("PDO 0x%04X: an entry of %u bits can be in no mapping that the master writes",
                              unsigned{pdo.index}, entry.bits));
      layout.items.push_back({entry, "", pdo.index, pdo.name, number, bit, !device.masterWrites(pdo)});
      bit += entry.bits;
    }
  }
}

void nameItems(std::vector<SmLayout>& layouts) {
  std::vector<Item*> items;
  std::vector<Named> named;
  for (auto& layout : layouts) {
    for (auto& item : layout.items) {
      if (item.entry.gap())
        continue;
      items.push_back(&item);
      named.push_back({item.entry.name, item.pdoName, item.entry.index, item.entry.subindex});
    }
  }
  const auto names = uniqueNames(named);
  for (std::size_t i = 0; i < items.size(); ++i)
    items[i]->name = names[i];
}

} // namespace

std::vector<SmLayout> layoutOf(const SourceDevice& device, const std::vector<SourcePdo>& pdos,
                               std::vector<std::string>& open) {
  std::map<unsigned int, SmLayout> bySyncManager;
  for (const auto& pdo : pdos) {
    auto& layout = bySyncManager[*pdo.syncManager];
    layout.index = *pdo.syncManager;
    layout.output = pdo.output;
    layout.assigned = device.coe && device.pdoAssign;
    layout.pdos.push_back(pdo);
  }
  std::vector<SmLayout> layouts;
  for (auto& [index, layout] : bySyncManager) {
    order(layout, device, open);
    spread(layout, device, open);
    layouts.push_back(std::move(layout));
  }
  nameItems(layouts);
  return layouts;
}

} // namespace igh_bus::adapt
