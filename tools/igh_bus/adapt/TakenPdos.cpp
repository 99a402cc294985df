#include "adapt/TakenPdos.h"

#include "text/Text.h"

#include <algorithm>

namespace igh_bus::adapt {
namespace {

bool names(const SourcePdo& pdo, std::uint16_t index) {
  return std::any_of(pdo.excludes.begin(), pdo.excludes.end(),
                     [&](const auto& exclude) { return exclude.first == index; });
}

} // namespace

std::string pdoText(const SourcePdo& pdo) {
  return format("PDO 0x%04X", unsigned{pdo.index}) + (pdo.name.empty() ? "" : " \"" + pdo.name + '"');
}

bool exclude(const SourcePdo& one, const SourcePdo& other) {
  return names(one, other.index) || names(other, one.index);
}

bool TakenPdos::any(bool output) const {
  return std::any_of(m_pdos.begin(), m_pdos.end(),
                     [&](const SourcePdo* pdo) { return pdo->output == output; });
}

const SourcePdo* TakenPdos::rivalOf(const SourcePdo& pdo) const {
  const auto in = [](const auto& map, std::uint16_t index) -> const SourcePdo* {
    const auto found = map.find(index);
    return found == map.end() ? nullptr : found->second;
  };
  for (const auto& exclude : pdo.excludes) {
    if (const auto* rival = in(m_byIndex, exclude.first))
      return rival;
  }
  const auto* excluder = in(m_excluders, pdo.index);
  const auto* twin = m_once ? in(m_byIndex, pdo.index) : nullptr;
  return excluder ? excluder : twin;
}

void TakenPdos::insert(const SourcePdo& pdo) {
  m_pdos.insert(&pdo);
  m_byIndex.try_emplace(pdo.index, &pdo);
  for (const auto& exclude : pdo.excludes)
    m_excluders.try_emplace(exclude.first, &pdo);
}

} // namespace igh_bus::adapt
