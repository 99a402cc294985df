// Registration of the process data at the platform, and what is known of the image afterwards.
#include "EthercatObject/CEthercatMaster.h"

#include <algorithm>
#include <cstdint>
#include <map>

// A row with index 0 (a gap) ends the platform's list, so each run of rows between gaps is handed over on its
// own, the gap serving as its terminator.
bool CEthercatMaster::registerProcessData() {
  unsigned int begin = 0;
  bool handedOver = false;
  while (begin < m_uiPdoEntryCount) {
    unsigned int end = begin;
    while (end < m_uiPdoEntryCount && m_pPdoEntryRegs[end].index != 0) {
      ++end;
    }
    if (end > begin) {
      if (ecrt_domain_reg_pdo_entry_list(m_pDomain, &m_pPdoEntryRegs[begin]) != 0) {
        return false;
      }
      handedOver = true;
    }
    begin = end + 1;
  }
  // Without any entry the platform still gets its one, empty list.
  return handedOver || ecrt_domain_reg_pdo_entry_list(m_pDomain, &m_pPdoEntryRegs[m_uiPdoEntryCount]) == 0;
}

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

// The bits that each entry of a slave has in the image, in the order of its registration rows; 0 for a gap.
// Of an object that only the slave itself maps, because its PDO got other entries, the start alone is known.
void CEthercatMaster::appendEntryBits(const CEthercatSlave& slave, std::vector<unsigned char>& bits) {
  if (slave.getPdoEntryCount() == 0) {
    return;
  }
  const ec_sync_info_t* const layout = slave.getENIObject()->getSlaveSyncInfo();
  const std::map<unsigned int, unsigned char> known = bitsByObject(layout);
  forEachPdo(layout, [&](const ec_pdo_info_t& pdo) {
    for (unsigned int entry = 0; entry < pdo.n_entries; ++entry) {
      const auto found = known.find(objectOf(pdo.entries[entry]));
      const bool gap = pdo.entries[entry].index == 0;
      bits.push_back(gap ? std::uint8_t{0} : found != known.end() ? found->second : std::uint8_t{1});
    }
  });
}

// Bytes up to the end of the last registered entry. An entry whose type is wider than its bits must not be
// copied beyond them. Of a slave that refused its layout only the start of each entry is known.
unsigned int CEthercatMaster::measureImage() const {
  unsigned int imageBits = 0;
  size_t row = 0;
  for (const auto& slave : m_vecSlaves) {
    for (unsigned int entry = 0; entry < slave->getPdoEntryCount(); ++entry, ++row) {
      if (m_pPdoEntryRegs[row].index == 0) {
        continue;
      }
      const unsigned int length = slave->isLayoutTaken() ? m_vecPdoEntryBits[row] : 1U;
      const _PDO_ENTRY_OFFSET* const place = slave->getPdoEntryOffset(entry);
      imageBits = std::max(imageBits, place->offset * 8 + place->bitPosition + length);
    }
  }
  return (imageBits + 7) / 8;
}
