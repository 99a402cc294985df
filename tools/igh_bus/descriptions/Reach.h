// Which bits of a slave's process data the library moves for somebody who knows its names.
#ifndef IGH_BUS_REACH_H
#define IGH_BUS_REACH_H

#include "descriptions/Device.h"

#include <map>
#include <set>

namespace igh_bus {

class Reach {
public:
  explicit Reach(const Device& device);

  // Every one of these bits, by a name of its own or as a bit of an entry that has one.
  bool covers(unsigned int syncManager, unsigned int start, unsigned int end) const;
  // The entry's type is wider than the entry, and the bits beyond it have no other name: a look at whole
  // bytes.
  bool isWindow(const Entry& entry) const { return m_windows.count(&entry) != 0; }

private:
  using Bits = std::vector<bool>;
  void openWindows(const SyncManager& syncManager);
  bool usable(const Entry& entry) const { return m_usable.count(&entry) != 0; }

  std::set<const Entry*> m_usable; // found by name and by object, on a byte boundary
  std::set<const Entry*> m_windows;
  std::map<unsigned int, Bits> m_bits; // by sync manager
};

} // namespace igh_bus

#endif
