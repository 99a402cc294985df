#include "adapt/PdoChoice.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <unordered_map>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int LAST_SYNC_MANAGER = 15;

std::string pdoText(const SourcePdo& pdo) {
  return format("PDO 0x%04X", unsigned{pdo.index}) + (pdo.name.empty() ? "" : " \"" + pdo.name + '"');
}

bool names(const SourcePdo& pdo, std::uint16_t index) {
  return std::any_of(pdo.excludes.begin(), pdo.excludes.end(),
                     [&](const auto& exclude) { return exclude.first == index; });
}

bool exclude(const SourcePdo& one, const SourcePdo& other) {
  return names(one, other.index) || names(other, one.index);
}

// "Outputs", "Inputs", and what else makers call them; mailboxes are neither.
bool meansDirection(std::string text, bool output) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text.rfind("mbox", 0) != 0 && text.rfind("mailbox", 0) != 0 && text.find(output ? "out" : "in") == 0;
}

class Chooser {
public:
  Chooser(const SourceDevice& device, std::vector<SourcePdo>& offered, const SourceMode* mode,
          const Wishes& wishes)
      : m_device(device), m_offered(offered), m_mode(mode), m_wishes(wishes) {}

  PdoChoice run() {
    checkWishes();
    for (const bool output : {true, false})
      chooseDirection(output);
    noteDirections();
    for (auto& pdo : m_offered) {
      if (m_taken.count(&pdo) == 0)
        continue;
      place(pdo);
      m_choice.pdos.push_back(pdo);
    }
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
  void insert(const SourcePdo& pdo);
  const SourcePdo* rivalOf(const SourcePdo& pdo) const;
  std::optional<unsigned int> describedAs(bool output) const;
  unsigned int syncManagerOf(bool output) const;
  void noteDirections();
  void place(SourcePdo& pdo);
  void tellRest();
  void tell(const SourcePdo& pdo, const std::string& from, const std::string& to, const std::string& why) {
    m_choice.changes.push_back({"pdo", pdoText(pdo), from, to, why});
  }
  bool assignable() const { return m_device.coe && m_device.pdoAssign; }
  bool anyTaken(bool output) const {
    return std::any_of(m_taken.begin(), m_taken.end(),
                       [&](const SourcePdo* pdo) { return pdo->output == output; });
  }

  const SourceDevice& m_device;
  std::vector<SourcePdo>& m_offered;
  const SourceMode* m_mode;
  const Wishes& m_wishes;
  std::set<const SourcePdo*> m_taken;
  std::unordered_map<std::uint16_t, const SourcePdo*> m_byIndex;   // of the taken ones
  std::unordered_map<std::uint16_t, const SourcePdo*> m_excluders; // by what they exclude
  std::set<const SourcePdo*> m_told;
  std::map<unsigned int, unsigned int> m_directions; // of each sync manager: 1 output, 2 input
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

const SourcePdo* Chooser::rivalOf(const SourcePdo& pdo) const {
  const auto in = [](const auto& map, std::uint16_t index) -> const SourcePdo* {
    const auto found = map.find(index);
    return found == map.end() ? nullptr : found->second;
  };
  for (const auto& exclude : pdo.excludes) {
    if (const auto* rival = in(m_byIndex, exclude.first))
      return rival;
  }
  const auto* excluder = in(m_excluders, pdo.index);
  const auto* twin = m_device.pdoAssign ? in(m_byIndex, pdo.index) : nullptr;
  return excluder ? excluder : twin;
}

void Chooser::insert(const SourcePdo& pdo) {
  m_taken.insert(&pdo);
  m_byIndex.try_emplace(pdo.index, &pdo);
  for (const auto& exclude : pdo.excludes)
    m_excluders.try_emplace(exclude.first, &pdo);
}

void Chooser::take(const SourcePdo& pdo) {
  const auto* rival = rivalOf(pdo);
  if (!rival) {
    insert(pdo);
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
    if (pdo.output == output && pdo.syncManager && m_taken.count(&pdo) == 0 &&
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
    if (pdo.output == output && fits && m_taken.count(&pdo) == 0 && m_told.count(&pdo) == 0)
      take(pdo);
  }
}

void Chooser::takeFirst(bool output) {
  const SourcePdo* first = nullptr;
  const SourcePdo* peaceful = nullptr;
  for (const auto& pdo : m_offered) {
    if (pdo.output != output || pdo.entries.empty() || rivalOf(pdo) || m_told.count(&pdo) != 0)
      continue;
    first = first ? first : &pdo;
    peaceful = peaceful || !pdo.excludes.empty() ? peaceful : &pdo;
  }
  if (!first)
    return;
  const auto& chosen = peaceful ? *peaceful : *first;
  insert(chosen);
  tell(chosen, "no sync manager", format("SM %u", syncManagerOf(output)),
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
  if (!anyTaken(output))
    takeFirst(output);
}

std::optional<unsigned int> Chooser::describedAs(bool output) const {
  for (unsigned int i = 0; i < m_device.syncManagers.size(); ++i) {
    if (meansDirection(m_device.syncManagers[i], output))
      return i;
  }
  return std::nullopt;
}

// That of other PDOs of the direction, else the one which is described so, else the usual one.
unsigned int Chooser::syncManagerOf(bool output) const {
  for (const auto& pdo : m_offered) {
    if (pdo.output == output && pdo.syncManager)
      return *pdo.syncManager;
  }
  const auto described = describedAs(output);
  if (described)
    return *described;
  if (m_device.coe || m_device.syncManagers.size() > 2)
    return output ? 2 : 3;
  return output || !anyTaken(true) ? 0 : 1;
}

void Chooser::noteDirections() {
  for (const auto* pdo : m_taken) {
    if (pdo->syncManager)
      m_directions[*pdo->syncManager] |= pdo->output ? 1U : 2U;
  }
}

// A sync manager has one direction: the library drops the PDOs of the other.
void Chooser::place(SourcePdo& pdo) {
  constexpr unsigned int BOTH = 3;
  if (!pdo.syncManager) {
    pdo.syncManager = syncManagerOf(pdo.output);
    return;
  }
  const unsigned int syncManager = *pdo.syncManager;
  const bool shared = m_directions[syncManager] == BOTH;
  if (syncManager <= LAST_SYNC_MANAGER && !shared)
    return;
  const auto usual =
      syncManager > LAST_SYNC_MANAGER ? (pdo.output ? 2U : 3U) : syncManager + (pdo.output ? 0U : 1U);
  const auto own = describedAs(pdo.output).value_or(usual);
  if (own == syncManager)
    return;
  tell(pdo, format("SM %u", syncManager), format("SM %u", own),
       shared ? "PDOs of the other direction have that sync manager" : "no slave has that sync manager");
  pdo.syncManager = own;
}

void Chooser::tellRest() {
  for (const bool output : {true, false}) {
    std::string left;
    for (const auto& pdo : m_offered) {
      if (pdo.output == output && m_taken.count(&pdo) == 0 && m_told.count(&pdo) == 0)
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
