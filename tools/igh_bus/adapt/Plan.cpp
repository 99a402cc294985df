#include "adapt/Plan.h"

#include "adapt/Bits.h"
#include "adapt/Clocks.h"
#include "adapt/Identity.h"
#include "adapt/Modules.h"
#include "adapt/PdoChoice.h"
#include "adapt/Telling.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

template <typename T> void append(std::vector<T>& to, std::vector<T>&& from) {
  std::move(from.begin(), from.end(), std::back_inserter(to));
}

std::size_t countEntries(const std::vector<SmLayout>& layouts) {
  std::size_t count = 0;
  for (const auto& layout : layouts)
    count += static_cast<std::size_t>(std::count_if(layout.items.begin(), layout.items.end(),
                                                    [](const Item& item) { return !item.entry.gap(); }));
  return count;
}

} // namespace

Plan planDevice(const Sources& sources, const SourceDevice& device, const DeviceKey& key,
                const Wishes& wishes) {
  Plan plan;
  plan.source = &device;
  plan.key = key;
  if (device.key.revision != key.revision)
    plan.changes.push_back({"revision", "device", format("0x%08X", device.key.revision),
                            format("0x%08X", key.revision),
                            "the description of this revision serves the slave"});
  plan.changes.insert(plan.changes.end(), device.numbers.begin(), device.numbers.end());

  TypeTable types;
  types.add(device.node);
  auto modules = placeModules(sources, device, wishes, types);
  plan.modules = std::move(modules.names);
  append(plan.changes, std::move(modules.changes));
  append(plan.open, std::move(modules.open));

  auto clock = chooseClock(device, wishes);
  plan.clock = clock.mode;
  plan.clockWished = !wishes.mode || *wishes.mode != "none";

  auto offered = device.pdos;
  append(offered, std::move(modules.pdos));
  auto choice = choosePdos(device, std::move(offered), clock.mode, wishes);
  append(plan.changes, std::move(choice.changes));
  append(plan.open, std::move(choice.open));
  append(plan.changes, std::move(clock.changes));

  plan.layout = layoutOf(device, choice.pdos, plan.open);
  plan.entries = countEntries(plan.layout);
  for (const auto& layout : plan.layout)
    plan.target.push_back(fit(layout, types));
  identify(plan);
  tellEntries(plan, types);
  return plan;
}

std::string objectText(std::uint16_t index, std::uint8_t subindex) {
  return format("0x%04X:%02X", unsigned{index}, unsigned{subindex});
}

} // namespace igh_bus::adapt
