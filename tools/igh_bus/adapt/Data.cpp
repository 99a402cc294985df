// What was done, as JSON.
#include "adapt/Telling.h"
#include "adapt/Words.h"
#include "text/Text.h"

namespace igh_bus::adapt {
namespace {

using Json = nlohmann::ordered_json;

Json changesJson(const Changes& changes) {
  Json list = Json::array();
  for (const auto& change : changes)
    list.push_back({{"what", change.what},
                    {"where", change.where},
                    {"from", change.from},
                    {"to", change.to},
                    {"why", change.why}});
  return list;
}

Json bitsJson(const SmLayout& layout, const TargetEntry& entry) {
  Json bits = Json::array();
  for (const auto& piece : entry.pieces) {
    const auto& item = layout.items[piece.item];
    bits.push_back({{"name", item.name},
                    {"object", objectText(item.entry.index, item.entry.subindex)},
                    {"mask", format("0x%X", maskOf(piece))},
                    {"shift", piece.bit},
                    {"count", piece.count},
                    {"from_bit", piece.sourceBit}});
  }
  return bits;
}

Json entriesJson(const Plan& plan) {
  Json entries = Json::array();
  for (std::size_t sm = 0; sm < plan.target.size(); ++sm) {
    const auto& layout = plan.layout[sm];
    for (const auto& pdo : plan.target[sm].pdos) {
      for (const auto& entry : pdo.entries) {
        if (entry.gap() || isFragment(entry))
          continue;
        Json one = {{"name", entry.name},
                    {"type", entry.type},
                    {"direction", layout.output ? "output" : "input"},
                    {"sync_manager", layout.index},
                    {"pdo", format("0x%04X", unsigned{pdo.index})},
                    {"object", objectText(entry.index, entry.subindex)},
                    {"bit_offset", entry.start},
                    {"bit_length", entry.bits}};
        if (!isItself(layout, entry))
          one["bits"] = bitsJson(layout, entry);
        entries.push_back(std::move(one));
      }
    }
  }
  return entries;
}

Json planJson(const Sources& sources, const Plan& plan) {
  return {{"name", plan.name()},
          {"vendor_id", format("0x%08X", plan.key.vendorId)},
          {"product_code", format("0x%08X", plan.key.productCode)},
          {"revision", format("0x%08X", plan.key.revision)},
          {"described_revision", format("0x%08X", plan.source->key.revision)},
          {"file", sources.files[plan.source->file].path},
          {"hidden", plan.source->hidden},
          {"slaves", plan.slaves},
          {"whole_before", plan.before.whole},
          {"whole_after", plan.after.whole},
          {"entry_count", plan.entries},
          {"reachable_before", plan.before.reachable},
          {"reachable_after", plan.after.reachable},
          {"clock_mode", plan.clock ? Json(plan.clock->name) : Json()},
          {"changes", changesJson(plan.changes)},
          {"open", plan.open},
          {"reasons", plan.reasons},
          {"entries", entriesJson(plan)}};
}

} // namespace

nlohmann::ordered_json adaptationData(const Sources& sources, const Adaptation& adaptation,
                                      const std::vector<std::string>& files) {
  const auto sum = adaptation.summary();
  Json data = {{"summary",
                {{"devices", sum.devices},
                 {"whole_before", sum.wholeBefore},
                 {"whole_after", sum.wholeAfter},
                 {"entries", sum.entries},
                 {"reachable_before", sum.reachableBefore},
                 {"reachable_after", sum.reachableAfter}}},
               {"files", files},
               {"notes", adaptation.notes},
               {"devices", Json::array()}};
  for (const auto& plan : adaptation.plans)
    data["devices"].push_back(planJson(sources, plan));
  return data;
}

} // namespace igh_bus::adapt
