#include "adapt/Modules.h"

#include "ENIObject/ENIObject.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int MOST_SLOTS = 255; // the objects that list modules have no more
constexpr std::size_t MOST_ENTRIES =
    1U << 16U; // that can have objects of their own; a small file can name far more

// A place for one module: an instance of a slot element.
struct Position {
  const SourceSlot* slot;
  unsigned int instance; // from 0
};

struct Pick {
  std::optional<std::uint32_t> ident;
  const char* why = "";
};

std::string hexadecimal(std::uint32_t ident) {
  return format("0x%X", ident);
}

std::string alternatives(const SourceSlot& slot) {
  static constexpr std::size_t MOST_SHOWN = 6;
  std::string text;
  for (std::size_t i = 0; i < std::min(slot.idents.size(), MOST_SHOWN); ++i)
    text += (text.empty() ? "" : ", ") + hexadecimal(slot.idents[i]);
  for (const auto& one : slot.classes)
    text += (text.empty() ? "class " : ", class ") + one;
  return text + (slot.idents.size() > MOST_SHOWN ? " ..." : "");
}

// What fills this position: the user's word, the slave's own, the default of the description.
Pick pick(const Position& position, unsigned int number, const Wishes& wishes) {
  const auto wished = wishes.modules.find(number);
  if (wished != wishes.modules.end())
    return {wished->second, "--module"};
  if (!wishes.reported.empty()) {
    const auto reported = wishes.reported.find(number);
    const bool filled = reported != wishes.reported.end() && reported->second != 0;
    return {filled ? std::optional(reported->second) : std::nullopt, "the slave reports it"};
  }
  const auto& slot = *position.slot;
  const bool needed = position.instance < std::max(slot.minInstances, 1U);
  if (slot.standard && needed)
    return {slot.standard, "the default of the slot"};
  if (slot.idents.size() == 1 && position.instance < slot.minInstances)
    return {slot.idents[0], "the only module of the slot"};
  return {};
}

struct Instances {
  unsigned int least;
  unsigned int most;
};

Instances instancesOf(const SourceSlot& slot) {
  const auto most = std::clamp(slot.maxInstances, 1U, MOST_SLOTS);
  return {std::clamp(slot.minInstances, 1U, most), most};
}

// As many positions as are needed for what is known: slots that may be repeated are not written out in vain.
std::vector<Position> positionsOf(const SourceDevice& device, const Wishes& wishes) {
  unsigned int highest = 0;
  for (const auto* list : {&wishes.modules, &wishes.reported}) {
    for (const auto& [slot, ident] : *list)
      highest = ident != 0 ? std::max(highest, slot) : highest;
  }
  unsigned int needed = 0;
  for (const auto& slot : device.slots)
    needed = std::min(needed + instancesOf(slot).least, MOST_SLOTS);
  unsigned int further = highest > needed ? highest - needed : 0;
  std::vector<Position> positions;
  for (const auto& slot : device.slots) {
    const auto [least, most] = instancesOf(slot);
    const auto repeated = std::min(further, most - least);
    further -= repeated;
    for (unsigned int i = 0; i < least + repeated && positions.size() < MOST_SLOTS; ++i)
      positions.push_back({&slot, i});
  }
  return positions;
}

void shift(SourcePdo& pdo, unsigned int number, std::uint32_t indexOffset, std::uint32_t pdoOffset) {
  const auto moved = [](std::uint16_t index, std::uint32_t offset) {
    return static_cast<std::uint16_t>(index + offset);
  };
  pdo.slot = number;
  if (pdo.ofSlot)
    pdo.index = moved(pdo.index, pdoOffset);
  for (auto& [index, ofSlot] : pdo.excludes)
    index = ofSlot ? moved(index, pdoOffset) : index;
  const auto prefix = CMasterENIObject::formatSeqInEnglish(number);
  pdo.name = prefix + pdo.name;
  for (auto& entry : pdo.entries) {
    if (entry.gap())
      continue;
    if (entry.ofSlot)
      entry.index = moved(entry.index, indexOffset);
    if (!entry.name.empty())
      entry.name = prefix + entry.name;
  }
}

void checkWishes(const SourceDevice& device, const Wishes& wishes, std::size_t slots) {
  for (const auto& [slot, ident] : wishes.modules) {
    if (slot == 0 || slot > slots)
      throw Failure(usageError,
                    format("--module slot %u: \"%s\" has %zu slots", slot, device.typeName.c_str(), slots));
  }
}

} // namespace

PlacedModules placeModules(const Sources& sources, const SourceDevice& device, const Wishes& wishes,
                           TypeTable& types) {
  PlacedModules placed;
  const auto positions = positionsOf(device, wishes);
  checkWishes(device, wishes, positions.size());
  std::uint32_t indexOffset = 0;
  std::uint32_t pdoOffset = 0;
  std::size_t entries = 0;
  for (unsigned int number = 1; number <= positions.size(); ++number) {
    const auto& position = positions[number - 1];
    const auto chosen = pick(position, number, wishes);
    const auto* module = chosen.ident ? sources.findModule(device, *chosen.ident) : nullptr;
    const std::string where = format("slot %u", number);
    placed.names.push_back(module ? module->name : "");
    if (module) {
      placed.changes.push_back({"module", where, alternatives(*position.slot),
                                hexadecimal(module->ident) + " \"" + module->name + "\"", chosen.why});
      placed.changes.insert(placed.changes.end(), module->numbers.begin(), module->numbers.end());
      types.add(module->node);
      for (auto pdo : module->pdos) {
        entries += pdo.entries.size();
        if (entries > MOST_ENTRIES)
          throw Failure(usageError, "the slots of \"" + device.typeName + "\" expand too far");
        shift(pdo, number, indexOffset, pdoOffset);
        placed.pdos.push_back(std::move(pdo));
      }
      if (!module->group.empty() && module->group != "0")
        placed.changes.push_back({"module", where, "group " + module->group, "group " + module->group,
                                  "padding between groups of modules is not added"});
    } else if (chosen.ident && wishes.modules.count(number) != 0) {
      throw Failure(usageError, format("--module %s: no module of that ident is described",
                                       hexadecimal(*chosen.ident).c_str()));
    } else if (chosen.ident) {
      placed.open.push_back(where + ": module " + hexadecimal(*chosen.ident) + " (" + chosen.why +
                            ") is not described: give its file to --eni");
    } else if (wishes.reported.empty() && !alternatives(*position.slot).empty()) {
      placed.open.push_back(where + " is taken for empty: none of its modules is the default (" +
                            alternatives(*position.slot) + "): use --module");
    }
    indexOffset += position.slot->indexIncrement.value_or(device.slotIndexIncrement);
    pdoOffset += position.slot->pdoIncrement.value_or(device.slotPdoIncrement);
  }
  return placed;
}

} // namespace igh_bus::adapt
