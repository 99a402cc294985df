#include "adapt/Telling.h"

#include "text/Text.h"

#include <map>

namespace igh_bus::adapt {
namespace {

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string typeText(const SourceEntry& entry) {
  return entry.type.empty() ? format("no type, %u bits", entry.bits)
                            : format("%s, %u bits", entry.type.c_str(), entry.bits);
}

std::string whereOf(const Item& item) {
  return objectText(item.entry.index, item.entry.subindex) + " " + quoted(item.name);
}

void tellKept(const Item& item, const TargetEntry& entry, const TypeTable& types, Changes& changes) {
  if (entry.type == item.entry.type)
    return;
  changes.push_back({"type", whereOf(item), typeText(item.entry), entry.type,
                     types.natureOf(item.entry.type).known
                         ? "the library's name for it"
                         : "nothing is known of the type: its bits are taken for an unsigned number"});
}

void tellJoined(const SmLayout& layout, const TargetEntry& entry, Changes& changes) {
  std::string from;
  std::string to = entry.type + " " + quoted(entry.name) + ":";
  for (const auto& piece : entry.pieces) {
    const auto& item = layout.items[piece.item];
    from += (from.empty() ? "" : ", ") + quoted(item.name) + " " + typeText(item.entry);
    to += format(" 0x%X ", maskOf(piece)) + quoted(item.name);
    if (piece.count != item.entry.bits)
      to += format(" from bit %u", piece.sourceBit);
  }
  changes.push_back({"bits", objectText(entry.index, entry.subindex), from, to,
                     entry.window != 0 ? "the entries stay; the first moves the whole bytes"
                     : entry.pieces[0].count == entry.bits ? "too wide for one value of the library"
                                                           : "the library moves whole bytes"});
}

void tellNames(const std::vector<SmLayout>& layouts, Changes& changes) {
  for (const auto& layout : layouts) {
    for (const auto& item : layout.items) {
      if (!item.entry.gap() && item.name != item.entry.name)
        changes.push_back({"name", objectText(item.entry.index, item.entry.subindex), quoted(item.entry.name),
                           quoted(item.name), item.entry.name.empty() ? "it had none" : "it is repeated"});
    }
  }
}

void tellGaps(const Plan& plan, Changes& changes) {
  std::size_t count = 0;
  std::string first;
  for (const auto& sm : plan.target) {
    for (const auto& pdo : sm.pdos) {
      for (const auto& entry : pdo.entries) {
        if (entry.gap() && count++ == 0)
          first = entry.name;
      }
    }
  }
  if (count != 0)
    changes.push_back({"name", "gaps", "",
                       quoted(first) + (count > 1 ? format(" and %zu more", count - 1) : ""),
                       "the library keeps their names too, and none may be repeated"});
}

} // namespace

std::uint32_t maskOf(const Piece& piece) {
  return static_cast<std::uint32_t>(((std::uint64_t{1} << piece.count) - 1) << piece.bit);
}

void tellEntries(Plan& plan, const TypeTable& types) {
  tellNames(plan.layout, plan.changes);
  tellGaps(plan, plan.changes);
  for (std::size_t sm = 0; sm < plan.target.size(); ++sm) {
    const auto& layout = plan.layout[sm];
    for (const auto& pdo : plan.target[sm].pdos) {
      for (const auto& entry : pdo.entries) {
        if (entry.gap() || isFragment(entry))
          continue;
        const auto& item = layout.items[entry.pieces[0].item];
        if (isItself(layout, entry))
          tellKept(item, entry, types, plan.changes);
        else
          tellJoined(layout, entry, plan.changes);
        if (entry.whole && (entry.index != item.entry.index || entry.subindex != item.entry.subindex))
          plan.changes.push_back({"object", quoted(entry.name),
                                  objectText(item.entry.index, item.entry.subindex),
                                  objectText(entry.index, entry.subindex),
                                  "the master finds entries by their object, and another has this one"});
      }
    }
    if (!layout.ascending)
      plan.changes.push_back(
          {"pdo", format("SM %u", layout.index), format("%zu PDOs", layout.pdos.size()),
           format("one PDO 0x%04X", unsigned{plan.target[sm].pdos[0].index}),
           layout.shelter == 0
               ? "the library would order them by their indices, the slave does not"
               : "the library would order them by their indices, the slave does not; the "
                 "slave keeps what its PDOs hold, as the master can write none into this one"});
  }
}

std::string countKinds(const Changes& changes) {
  std::map<std::string, std::size_t> counts;
  for (const auto& change : changes)
    ++counts[change.what];
  std::string text;
  for (const auto& [what, count] : counts)
    text += (text.empty() ? "" : ", ") + what + format(" %zu", count);
  return text.empty() ? "nothing" : text;
}

} // namespace igh_bus::adapt
