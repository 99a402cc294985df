#include "adapt/Identity.h"

#include "adapt/Names.h"
#include "text/Text.h"

#include <algorithm>
#include <set>

namespace igh_bus::adapt {
namespace {

template <typename Visit> void forEachEntry(Plan& plan, Visit visit) {
  for (std::size_t sm = 0; sm < plan.target.size(); ++sm) {
    for (auto& pdo : plan.target[sm].pdos) {
      for (auto& entry : pdo.entries)
        visit(plan.layout[sm], pdo, entry);
    }
  }
}

void nameEntries(Plan& plan) {
  std::vector<TargetEntry*> entries;
  std::vector<Named> named;
  forEachEntry(plan, [&](const SmLayout& layout, const TargetPdo& pdo, TargetEntry& entry) {
    if (entry.gap())
      return;
    entries.push_back(&entry);
    const auto& home = layout.items[entry.pieces[0].item];
    named.push_back(
        {entry.name, layout.ascending ? pdo.name : home.pdoName, entry.index, entry.subindex, entry.whole});
  });
  const auto names = uniqueNames(named);
  for (std::size_t i = 0; i < entries.size(); ++i)
    entries[i]->name = names[i];
}

// The library keeps gaps in its table of names too, and complains of repeated ones.
void nameGaps(Plan& plan) {
  std::set<std::string> taken;
  forEachEntry(
      plan, [&](const SmLayout&, const TargetPdo&, const TargetEntry& entry) { taken.insert(entry.name); });
  forEachEntry(plan, [&](const SmLayout& layout, const TargetPdo&, TargetEntry& entry) {
    if (!entry.gap())
      return;
    const auto name = format("Gap SM %u bit %u", layout.index, entry.start);
    entry.name = name;
    for (int number = 2; !taken.insert(entry.name).second; ++number)
      entry.name = name + " #" + std::to_string(number);
  });
}

using Object = std::pair<std::uint16_t, std::uint8_t>;

class Objects {
public:
  explicit Objects(Plan& plan) : m_plan(plan) {
    for (const auto& layout : plan.layout) {
      for (const auto& item : layout.items)
        m_known.emplace(item.entry.index, item.entry.subindex);
    }
  }

  // The master finds an entry by its object, and takes the first that has it.
  void makeUnique() {
    settle([](const TargetEntry& entry) { return !entry.free; });
    settle([](const TargetEntry& entry) { return entry.free && entry.whole; });
    settle([](const TargetEntry& entry) { return entry.free && !entry.whole; });
  }

private:
  template <typename Condition> void settle(Condition condition) {
    forEachEntry(m_plan, [&](const SmLayout&, const TargetPdo&, TargetEntry& entry) {
      if (entry.gap() || !condition(entry) || m_used.emplace(entry.index, entry.subindex).second)
        return;
      if (!entry.free) {
        m_plan.open.push_back("object " + objectText(entry.index, entry.subindex) +
                              " is mapped twice: the master finds the first only, not \"" + entry.name + '"');
        entry.disarm();
        return;
      }
      const auto object = unusedNear(entry.index);
      entry.index = object.first;
      entry.subindex = object.second;
      m_used.insert(object);
    });
  }

  // Subindices from above, which slaves hardly use.
  Object unusedNear(std::uint16_t index) const {
    for (;; index = static_cast<std::uint16_t>(index == 0xFFFF ? 1 : index + 1)) {
      for (unsigned int subindex = 0xFF; subindex > 0; --subindex) {
        const Object object(index, static_cast<std::uint8_t>(subindex));
        if (m_used.count(object) == 0 && m_known.count(object) == 0)
          return object;
      }
    }
  }

  Plan& m_plan;
  std::set<Object> m_known; // of the slave
  std::set<Object> m_used;
};

// All entries into the first PDO: the library would put a PDO of another index elsewhere.
void gather(TargetSm& sm) {
  for (std::size_t i = 1; i < sm.pdos.size(); ++i) {
    auto& from = sm.pdos[i].entries;
    std::move(from.begin(), from.end(), std::back_inserter(sm.pdos[0].entries));
    from.clear();
  }
}

// One PDO index stands in one sync manager only, for the master.
class PdoIndices {
public:
  explicit PdoIndices(Plan& plan) : m_plan(plan) {
    for (const auto& layout : plan.layout) {
      for (const auto& pdo : layout.pdos)
        m_used.insert(pdo.index);
    }
  }

  void separate() {
    for (std::size_t sm = 0; sm < m_plan.target.size(); ++sm) {
      auto& target = m_plan.target[sm];
      if (std::any_of(target.pdos.begin(), target.pdos.end(),
                      [&](const TargetPdo& pdo) { return isTaken(pdo); }))
        renumber(m_plan.layout[sm], target);
      for (const auto& pdo : target.pdos) {
        if (!pdo.entries.empty())
          m_taken.insert(pdo.index);
      }
    }
  }

private:
  bool isTaken(const TargetPdo& pdo) const { return !pdo.entries.empty() && m_taken.count(pdo.index) != 0; }

  void renumber(const SmLayout& layout, TargetSm& target) {
    const bool written = std::any_of(layout.pdos.begin(), layout.pdos.end(),
                                     [&](const SourcePdo& pdo) { return m_plan.source->masterWrites(pdo); });
    if (layout.assigned || (written && layout.shelter == 0)) {
      m_plan.open.push_back(
          format("SM %u has a PDO index that another sync manager has too: the master takes one "
                 "of them",
                 target.index));
      return;
    }
    gather(target);
    auto& pdo = target.pdos[0];
    const auto from = pdo.index;
    while (!m_used.insert(pdo.index).second)
      ++pdo.index;
    m_plan.changes.push_back({"pdo", format("SM %u", target.index), format("0x%04X", unsigned{from}),
                              format("0x%04X", unsigned{pdo.index}),
                              "another sync manager has a PDO of that index, and the master takes one only"});
  }

  Plan& m_plan;
  std::set<std::uint16_t> m_used;  // by the slave
  std::set<std::uint16_t> m_taken; // by sync managers before
};

} // namespace

void identify(Plan& plan) {
  nameEntries(plan);
  nameGaps(plan);
  Objects(plan).makeUnique();
  PdoIndices(plan).separate();
}

} // namespace igh_bus::adapt
