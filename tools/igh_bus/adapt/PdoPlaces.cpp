#include "adapt/PdoPlaces.h"

#include "text/Text.h"

#include <algorithm>
#include <cctype>

namespace igh_bus::adapt {
namespace {

constexpr unsigned int LAST_SYNC_MANAGER = 15;

// "Outputs", "Inputs", and what else makers call them; mailboxes are neither.
bool meansDirection(std::string text, bool output) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text.rfind("mbox", 0) != 0 && text.rfind("mailbox", 0) != 0 && text.find(output ? "out" : "in") == 0;
}

} // namespace

PdoPlaces::PdoPlaces(const SourceDevice& device, const std::vector<SourcePdo>& offered,
                     const TakenPdos& taken)
    : m_device(device), m_offered(offered), m_taken(taken) {
  for (const auto* pdo : m_taken.all()) {
    if (pdo->syncManager)
      m_directions[*pdo->syncManager] |= pdo->output ? 1U : 2U;
  }
}

std::optional<unsigned int> PdoPlaces::describedAs(bool output) const {
  for (unsigned int i = 0; i < m_device.syncManagers.size(); ++i) {
    if (meansDirection(m_device.syncManagers[i], output))
      return i;
  }
  return std::nullopt;
}

unsigned int PdoPlaces::usual(bool output) const {
  for (const auto& pdo : m_offered) {
    if (pdo.output == output && pdo.syncManager)
      return *pdo.syncManager;
  }
  const auto described = describedAs(output);
  if (described)
    return *described;
  if (m_device.coe || m_device.syncManagers.size() > 2)
    return output ? 2 : 3;
  return output || !m_taken.any(true) ? 0 : 1;
}

void PdoPlaces::place(SourcePdo& pdo, Changes& changes) const {
  constexpr unsigned int BOTH = 3;
  if (!pdo.syncManager) {
    pdo.syncManager = usual(pdo.output);
    return;
  }
  const unsigned int syncManager = *pdo.syncManager;
  const bool shared = m_directions.at(syncManager) == BOTH;
  if (syncManager <= LAST_SYNC_MANAGER && !shared)
    return;
  const auto usual =
      syncManager > LAST_SYNC_MANAGER ? (pdo.output ? 2U : 3U) : syncManager + (pdo.output ? 0U : 1U);
  const auto own = describedAs(pdo.output).value_or(usual);
  if (own == syncManager)
    return;
  changes.push_back(
      {"pdo", pdoText(pdo), format("SM %u", syncManager), format("SM %u", own),
       shared ? "PDOs of the other direction have that sync manager" : "no slave has that sync manager"});
  pdo.syncManager = own;
}

} // namespace igh_bus::adapt
