// The PDOs that are taken so far, and which others they keep out.
#ifndef IGH_BUS_ADAPT_TAKENPDOS_H
#define IGH_BUS_ADAPT_TAKENPDOS_H

#include "adapt/Source.h"

#include <set>
#include <unordered_map>

namespace igh_bus::adapt {

// "PDO 0x1A00 "Name""
std::string pdoText(const SourcePdo& pdo);

bool exclude(const SourcePdo& one, const SourcePdo& other);

// Points to the PDOs that it is given.
class TakenPdos {
public:
  // `once`: an index can be taken only once.
  explicit TakenPdos(bool once) : m_once(once) {}

  void insert(const SourcePdo& pdo);
  bool has(const SourcePdo& pdo) const { return m_pdos.count(&pdo) != 0; }
  bool any(bool output) const;
  // The one that keeps `pdo` out; null for none.
  const SourcePdo* rivalOf(const SourcePdo& pdo) const;
  const std::set<const SourcePdo*>& all() const { return m_pdos; }

private:
  bool m_once;
  std::set<const SourcePdo*> m_pdos;
  std::unordered_map<std::uint16_t, const SourcePdo*> m_byIndex;
  std::unordered_map<std::uint16_t, const SourcePdo*> m_excluders; // by what they exclude
};

} // namespace igh_bus::adapt

#endif
