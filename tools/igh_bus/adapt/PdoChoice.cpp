#include "adapt/PdoChoice.h"

#include "adapt/PdoPlaces.h"
#include "adapt/TakenPdos.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <set>

namespace igh_bus::adapt {
namespace {

class Chooser {
public:
  Chooser(const SourceDevice& device, std::vector<SourcePdo>& offered, const SourceMode* mode,
          const Wishes& wishes)
      : m_device(device), m_offered(offered), m_mode(mode), m_wishes(wishes), m_taken(device.pdoAssign) {}

  PdoChoice run() {
    checkWishes();
    for (const bool output : {true, false})
      chooseDirection(output);
    placeTaken();
    tellRest();
    return std::move(m_choice);
  }

private:
  void checkWishes();
  bool wished(const SourcePdo& pdo) const {
    return std::find(m_wishes.pdos.begin(), m_wishes.pdos.end(), pdo.index) != m_wishes.pdos.end();
  }
  std::optional<unsigned int> listed(const SourcePdo& pdo) const;
  void chooseDirection(bool output);
  void takeWished(bool output);
  void takeListed(bool output);
  void takeRanked(bool output, int rank);
  void takeFirst(bool output);
  void take(const SourcePdo& pdo);
  void placeTaken();
  void tellRest();
  void tell(const SourcePdo& pdo, const std::string& from, const std::string& to, const std::string& why) {
    m_choice.changes.push_back({"pdo", pdoText(pdo), from, to, why});
  }
  bool assignable() const { return m_device.coe && m_device.pdoAssign; }

  const SourceDevice& m_device;
  std::vector<SourcePdo>& m_offered;
  const SourceMode* m_mode;
  const Wishes& m_wishes;
  TakenPdos m_taken;
  std::set<const SourcePdo*> m_told;
  PdoChoice m_choice;
};

void Chooser::checkWishes() {
  if (!m_wishes.pdos.empty() && !assignable())
    m_choice.open.push_back(
        "--pdo: the slave does not let its PDOs be assigned (CoE with PdoAssign); it stays in "
        "PREOP unless it has these by itself");
  for (const auto index : m_wishes.pdos) {
    if (std::none_of(m_offered.begin(), m_offered.end(),
                     [&](const SourcePdo& pdo) { return pdo.index == index; }))
      throw Failure(usageError, format("--pdo 0x%04X: \"%s\" has no such PDO", unsigned{index},
                                       m_device.typeName.c_str()));
  }
  for (const auto& one : m_offered) {
    if (!wished(one))
      continue;
    for (const auto& other : m_offered) {
      if (&one < &other && wished(other) && exclude(one, other))
        throw Failure(usageError, format("--pdo: 0x%04X and 0x%04X exclude each other", unsigned{one.index},
                                         unsigned{other.index}));
    }
  }
}

std::optional<unsigned int> Chooser::listed(const SourcePdo& pdo) const {
  if (!m_mode)
    return std::nullopt;
  for (const auto& [syncManager, list] : m_mode->pdos) {
    if (std::find(list.begin(), list.end(), pdo.index) != list.end())
      return syncManager;
  }
  return std::nullopt;
}

void Chooser::take(const SourcePdo& pdo) {
  const auto* rival = m_taken.rivalOf(pdo);
  if (!rival) {
    m_taken.insert(pdo);
    return;
  }
  m_told.insert(&pdo);
  tell(pdo, pdo.syncManager ? format("SM %u", *pdo.syncManager) : "mandatory", "left out",
       rival->index == pdo.index ? "described twice, and a PDO can be assigned only once"
                                 : "it and " + pdoText(*rival) + " exclude each other");
}

void Chooser::takeWished(bool output) {
  for (const auto& pdo : m_offered) {
    if (pdo.output == output && wished(pdo)) {
      take(pdo);
      if (!pdo.syncManager)
        tell(pdo, "no sync manager", "assigned", "--pdo");
    }
  }
}

void Chooser::takeListed(bool output) {
  for (auto& pdo : m_offered) {
    const auto syncManager = listed(pdo);
    if (pdo.output != output || !syncManager)
      continue;
    if (pdo.syncManager != syncManager)
      tell(pdo, pdo.syncManager ? format("SM %u", *pdo.syncManager) : "no sync manager",
           format("SM %u", *syncManager), "the operation mode \"" + m_mode->name + "\" lists it");
    pdo.syncManager = syncManager;
    take(pdo);
  }
  for (auto& pdo : m_offered) {
    if (pdo.output == output && pdo.syncManager && !m_taken.has(pdo) &&
        m_mode->pdos.count(*pdo.syncManager) != 0) {
      m_told.insert(&pdo);
      tell(pdo, format("SM %u", *pdo.syncManager), "left out",
           "the operation mode \"" + m_mode->name + "\" does not list it");
    }
  }
}

// 0: mandatory, 1: with a sync manager. A mandatory PDO without one is taken where that can be: in the place
// of another, or because the master assigns.
void Chooser::takeRanked(bool output, int rank) {
  for (const auto& pdo : m_offered) {
    const bool possible = pdo.syncManager || !pdo.excludes.empty() || assignable();
    const bool fits = rank == 0 ? pdo.mandatory && possible : !pdo.mandatory && pdo.syncManager;
    if (pdo.output == output && fits && !m_taken.has(pdo) && m_told.count(&pdo) == 0)
      take(pdo);
  }
}

void Chooser::takeFirst(bool output) {
  const SourcePdo* first = nullptr;
  const SourcePdo* peaceful = nullptr;
  for (const auto& pdo : m_offered) {
    if (pdo.output != output || pdo.entries.empty() || m_taken.rivalOf(pdo) || m_told.count(&pdo) != 0)
      continue;
    first = first ? first : &pdo;
    peaceful = peaceful || !pdo.excludes.empty() ? peaceful : &pdo;
  }
  if (!first)
    return;
  const auto& chosen = peaceful ? *peaceful : *first;
  m_taken.insert(chosen);
  tell(chosen, "no sync manager", format("SM %u", PdoPlaces(m_device, m_offered, m_taken).usual(output)),
       peaceful ? "no PDO of its direction has one; the first that excludes nothing"
                : "no PDO of its direction has one, and all exclude others; the first");
  if (!peaceful)
    m_choice.open.push_back("which of the " + std::string(output ? "receive" : "transmit") +
                            " PDOs is wanted: the first is taken, use --pdo for others");
}

void Chooser::chooseDirection(bool output) {
  const auto ofDirection = [&](const SourcePdo& pdo) { return pdo.output == output; };
  if (std::any_of(m_offered.begin(), m_offered.end(),
                  [&](const SourcePdo& pdo) { return ofDirection(pdo) && wished(pdo); })) {
    takeWished(output);
    return;
  }
  if (m_mode && std::any_of(m_offered.begin(), m_offered.end(),
                            [&](const SourcePdo& pdo) { return ofDirection(pdo) && listed(pdo); }))
    takeListed(output);
  for (const int rank : {0, 1})
    takeRanked(output, rank);
  if (!m_taken.any(output))
    takeFirst(output);
}

void Chooser::placeTaken() {
  PdoPlaces places(m_device, m_offered, m_taken);
  for (auto& pdo : m_offered) {
    if (!m_taken.has(pdo))
      continue;
    places.place(pdo, m_choice.changes);
    m_choice.pdos.push_back(pdo);
  }
}

void Chooser::tellRest() {
  for (const bool output : {true, false}) {
    std::string left;
    for (const auto& pdo : m_offered) {
      if (pdo.output == output && !m_taken.has(pdo) && m_told.count(&pdo) == 0)
        left += (left.empty() ? "" : ", ") + format("0x%04X", unsigned{pdo.index});
    }
    if (!left.empty())
      m_choice.changes.push_back({"pdo", output ? "RxPdo" : "TxPdo", left, "left out",
                                  m_wishes.pdos.empty() ? "not assigned from the start; --pdo chooses them"
                                                        : "not chosen by --pdo"});
  }
}

} // namespace

PdoChoice choosePdos(const SourceDevice& device, std::vector<SourcePdo> offered, const SourceMode* mode,
                     const Wishes& wishes) {
  return Chooser(device, offered, mode, wishes).run();
}

} // namespace igh_bus::adapt
