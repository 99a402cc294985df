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

// The bits that each entry of a slave has in the image, in the order of its registration rows; 0 for a gap.
// The platform places an object that is mapped twice where it stands first, so the first length counts.
void CEthercatMaster::appendEntryBits(const CEthercatSlave& slave, std::vector<unsigned char>& bits) {
  if (slave.getPdoEntryCount() == 0) {
    return;
  }
  std::map<unsigned int, unsigned char> firstLength;
  for (const ec_sync_info_t* sync = slave.getENIObject()->getSlaveSyncInfo(); sync->index != 0xff; ++sync) {
    for (unsigned int pdo = 0; pdo < sync->n_pdos; ++pdo) {
      for (unsigned int i = 0; i < sync->pdos[pdo].n_entries; ++i) {
        const ec_pdo_entry_info_t& entry = sync->pdos[pdo].entries[i];
        const unsigned int object = static_cast<unsigned int>(entry.index) << 8U | entry.subindex;
        const bool gap = entry.index == 0;
        bits.push_back(gap ? std::uint8_t{0} : firstLength.emplace(object, entry.bit_length).first->second);
      }
    }
  }
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
