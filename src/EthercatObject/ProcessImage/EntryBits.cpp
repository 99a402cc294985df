#include "EthercatObject/ProcessImage/EntryBits.h"

#include <cstdint>
#include <map>

namespace {

template <typename Visit> void forEachPdo(const ec_sync_info_t* sync, Visit visit) {
  for (; sync->index != 0xff; ++sync) {
    for (unsigned int pdo = 0; pdo < sync->n_pdos; ++pdo) {
      visit(sync->pdos[pdo]);
    }
  }
}

unsigned int objectOf(const ec_pdo_entry_info_t& entry) {
  return static_cast<unsigned int>(entry.index) << 8U | entry.subindex;
}

// Bits of each object of a layout as the platform takes it: a PDO that several sync managers have stands in
// the first of them, with the entries of the last; an object that is mapped twice is where it stands first.
std::map<unsigned int, unsigned char> bitsByObject(const ec_sync_info_t* layout) {
  std::map<unsigned int, const ec_pdo_info_t*> definitions;
  forEachPdo(layout, [&](const ec_pdo_info_t& pdo) {
    if (pdo.n_entries > 0) {
      definitions[pdo.index] = &pdo;
    }
  });
  std::map<unsigned int, unsigned char> bits;
  forEachPdo(layout, [&](const ec_pdo_info_t& pdo) {
    const auto found = definitions.find(pdo.index);
    if (found != definitions.end()) {
      const ec_pdo_info_t& definition = *found->second;
      for (unsigned int entry = 0; entry < definition.n_entries; ++entry) {
        bits.emplace(objectOf(definition.entries[entry]), definition.entries[entry].bit_length);
      }
      definitions.erase(found);
    }
  });
  return bits;
}

} // namespace

void appendEntryBits(const ec_sync_info_t* layout, std::vector<unsigned char>& bits) {
  const std::map<unsigned int, unsigned char> known = bitsByObject(layout);
  forEachPdo(layout, [&](const ec_pdo_info_t& pdo) {
    for (unsigned int entry = 0; entry < pdo.n_entries; ++entry) {
      const auto found = known.find(objectOf(pdo.entries[entry]));
      const bool gap = pdo.entries[entry].index == 0;
      bits.push_back(gap ? std::uint8_t{0} : found != known.end() ? found->second : std::uint8_t{1});
    }
  });
}
