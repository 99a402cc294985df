#include "EthercatObject/ProcessImage/RegistrationList.h"

#include "EthercatObject/ProcessImage/EntryBits.h"
#include "EthercatObject/ProcessImage/EntryText.h"

#include <algorithm>
#include <cstdio>

void CRegistrationList::build(const SLAVE_LIST& slaves) {
  for (const auto& slave : slaves) {
    m_uiPdoEntryCount += slave->getPdoEntryCount();
  }
  m_pRows = std::make_unique<ec_pdo_entry_reg_t[]>(static_cast<size_t>(m_uiPdoEntryCount) + 1);
  m_vecPdoEntryNames.reserve(m_uiPdoEntryCount);
  m_vecPdoEntryBits.reserve(m_uiPdoEntryCount);
  ec_pdo_entry_reg_t* row = m_pRows.get();
  for (const auto& slave : slaves) {
    for (unsigned int entry = 0; entry < slave->getPdoEntryCount(); ++entry, ++row) {
      _PDO_ENTRY_OFFSET* const place = slave->getPdoEntryOffset(entry);
      *row = slave->getENIObject()->getSlavePDOEntryReg()[entry];
      row->alias = static_cast<uint16_t>(slave->getSlaveAlias());
      row->position = static_cast<uint16_t>(slave->getSlavePosition());
      row->offset = &place->offset;
      row->bit_position = &place->bitPosition;
      m_vecPdoEntryNames.push_back(entryName(*slave->getENIObject(), entry));
    }
    if (slave->getPdoEntryCount() > 0) {
      appendEntryBits(slave->getENIObject()->getSlaveSyncInfo(), m_vecPdoEntryBits);
    }
  }
}

// A row with index 0 (a gap) ends the platform's list, so each run of rows between gaps is handed over on its
// own, the gap serving as its terminator.
bool CRegistrationList::registerAt(ec_domain_t* domain) const {
  unsigned int begin = 0;
  bool handedOver = false;
  while (begin < m_uiPdoEntryCount) {
    unsigned int end = begin;
    while (end < m_uiPdoEntryCount && m_pRows[end].index != 0) {
      ++end;
    }
    if (end > begin) {
      if (ecrt_domain_reg_pdo_entry_list(domain, &m_pRows[begin]) != 0) {
        return false;
      }
      handedOver = true;
    }
    begin = end + 1;
  }
  // Without any entry the platform still gets its one, empty list.
  return handedOver || ecrt_domain_reg_pdo_entry_list(domain, &m_pRows[m_uiPdoEntryCount]) == 0;
}

// An entry whose type is wider than its bits must not be copied beyond them. Of a slave that refused its
// layout only the start of each entry is known.
unsigned int CRegistrationList::measureImage(const SLAVE_LIST& slaves) const {
  unsigned int imageBits = 0;
  size_t row = 0;
  for (const auto& slave : slaves) {
    for (unsigned int entry = 0; entry < slave->getPdoEntryCount(); ++entry, ++row) {
      if (m_pRows[row].index == 0) {
        continue;
      }
      const unsigned int length = slave->isLayoutTaken() ? m_vecPdoEntryBits[row] : 1U;
      imageBits = std::max(imageBits, *m_pRows[row].offset * 8 + *m_pRows[row].bit_position + length);
    }
  }
  return (imageBits + 7) / 8;
}

void CRegistrationList::print() const {
  if (m_uiPdoEntryCount == 0) {
    return;
  }
  std::fputs("const static ec_pdo_entry_reg_t domain1_regs[] = {\n", stdout);
  for (unsigned int row = 0; row < m_uiPdoEntryCount; ++row) {
    const ec_pdo_entry_reg_t& registration = m_pRows[row];
    const bool last = row + 1 == m_uiPdoEntryCount;
    std::printf("    {%d, %d, 0x%08X, 0x%08X, 0x%04X, %d, &intOffset[%d], &intBitPosition[%d]}\t/* %s */%s\n",
                registration.alias, registration.position, registration.vendor_id, registration.product_code,
                static_cast<unsigned int>(registration.index), registration.subindex, static_cast<int>(row),
                static_cast<int>(row), m_vecPdoEntryNames[row].c_str(), last ? "" : ", ");
  }
  std::fputs("    {}\n};\n\n", stdout);
}
