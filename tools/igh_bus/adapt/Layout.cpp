#include "adapt/Layout.h"

#include "adapt/Names.h"
#include "text/Text.h"

#include <algorithm>
#include <set>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int MOST_MAPPED = 255; // bits: a mapping has eight bits for the length
constexpr std::uint16_t LAST_RECEIVE_PDO = 0x17FF;
constexpr std::uint16_t LAST_TRANSMIT_PDO = 0x1BFF;

bool strictlyAscending(const std::vector<SourcePdo>& pdos) {
  return std::adjacent_find(pdos.begin(), pdos.end(), [](const SourcePdo& one, const SourcePdo& next) {
           return one.index >= next.index;
         }) == pdos.end();
}

// The master assigns PDOs in the library's order, by index. Otherwise the slave has the order of its
// description; what modules bring stands by index there too.
void order(SmLayout& layout) {
  const bool ofModules =
      std::any_of(layout.pdos.begin(), layout.pdos.end(), [](const SourcePdo& pdo) { return pdo.slot != 0; });
  if (layout.assigned || ofModules)
    std::stable_sort(layout.pdos.begin(), layout.pdos.end(),
                     [](const SourcePdo& one, const SourcePdo& other) { return one.index < other.index; });
  layout.ascending = strictlyAscending(layout.pdos);
}

bool anyWritten(const SmLayout& layout, const SourceDevice& device) {
  return std::any_of(layout.pdos.begin(), layout.pdos.end(),
                     [&](const SourcePdo& pdo) { return device.masterWrites(pdo); });
}

// Where the order of the slave is not the library's, one PDO holds all entries, and the master must not write
// them into it: that of a fixed one, else one that the slave does not have. It refuses both, with a warning,
// and the PDOs that are not configured stay as they are.
void shelter(SmLayout& layout, const SourceDevice& device, std::set<std::uint16_t>& used) {
  if (layout.ascending || layout.assigned || !anyWritten(layout, device))
    return;
  const auto fixed = std::find_if(layout.pdos.begin(), layout.pdos.end(),
                                  [](const SourcePdo& pdo) { return pdo.fixed && !pdo.entries.empty(); });
  if (fixed != layout.pdos.end()) {
    layout.shelter = fixed->index;
    return;
  }
  layout.shelter = layout.output ? LAST_RECEIVE_PDO : LAST_TRANSMIT_PDO;
  while (!used.insert(layout.shelter).second)
    --layout.shelter;
}

void spread(SmLayout& layout, const SourceDevice& device, std::vector<std::string>& open) {
  unsigned int bit = 0;
  for (std::size_t number = 0; number < layout.pdos.size(); ++number) {
    const auto& pdo = layout.pdos[number];
    const bool written = layout.shelter == 0 && device.masterWrites(pdo);
    for (const auto& entry : pdo.entries) {
      if (entry.bits > MOST_MAPPED && written)
        open.push_back(format("PDO 0x%04X: an entry of %u bits can be in no mapping that the master writes",
                              unsigned{pdo.index}, entry.bits));
      layout.items.push_back({entry, "", pdo.index, pdo.name, number, bit, !written});
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
  std::set<std::uint16_t> used;
  for (const auto* list : {&device.pdos, &pdos}) {
    for (const auto& pdo : *list)
      used.insert(pdo.index);
  }
  std::vector<SmLayout> layouts;
  for (auto& [index, layout] : bySyncManager) {
    order(layout);
    shelter(layout, device, used);
    spread(layout, device, open);
    layouts.push_back(std::move(layout));
  }
  nameItems(layouts);
  return layouts;
}

} // namespace igh_bus::adapt
