#include "ENIObject/CSlaveENIObject.h"

#include <cstdio>

namespace {

// The comma stands behind the comment of its row; the last row has none.
const char* rowEnd(unsigned int row, unsigned int count) {
  return row + 1 < count ? ", \n" : "\n";
}

} // namespace

void CSlaveENIObject::syncInfoPrintf(int tables) const {
  if ((tables & 0x1) != 0) {
    printRegistrationTable();
  }
  if ((tables & 0x2) != 0) {
    printEntryTable();
  }
  if ((tables & 0x4) != 0) {
    printPDOTable();
  }
  if ((tables & 0x8) != 0) {
    printSyncManagerTable();
  }
}

void CSlaveENIObject::printRegistrationTable() const {
  std::printf("const static ec_pdo_entry_reg_t domain1_regs[] = {\n");
  for (unsigned int row = 0; row < m_uiPDOEntryCount; ++row) {
    const ec_pdo_entry_reg_t& entry = m_pPDOEntryReg[row];
    std::printf("    {%d, %d, 0x%08X, 0x%08X, 0x%04X, %d, NULL, NULL}\t/* %s */%s", entry.alias,
                entry.position, entry.vendor_id, entry.product_code, entry.index, entry.subindex,
                m_vecEntryName[row].c_str(), rowEnd(row, m_uiPDOEntryCount));
  }
  std::printf("    {}\n};\n\n");
}

void CSlaveENIObject::printEntryTable() const {
  std::printf("static ec_pdo_entry_info_t m_pPDOEntryArray[] = {\n");
  for (unsigned int row = 0; row < m_uiPDOEntryCount; ++row) {
    const ec_pdo_entry_info_t& entry = m_pPDOEntryArray[row];
    std::printf("    {0x%X, %d, %d}\t/* %s */%s", entry.index, entry.subindex, entry.bit_length,
                m_vecEntryName[row].c_str(), rowEnd(row, m_uiPDOEntryCount));
  }
  std::printf("};\n\n");
}

void CSlaveENIObject::printPDOTable() const {
  std::printf("static ec_pdo_info_t m_pPDOInfoArray[] = {\n");
  for (unsigned int row = 0; row < m_uiPDOInfoCount; ++row) {
    const ec_pdo_info_t& pdo = m_pPDOInfoArray[row];
    std::printf("    {0x%X, %d, &m_pPDOEntryArray[%d]}%s", pdo.index, static_cast<int>(pdo.n_entries),
                static_cast<int>(pdo.entries - m_pPDOEntryArray.get()), rowEnd(row, m_uiPDOInfoCount));
  }
  std::printf("};\n\n");
}

void CSlaveENIObject::printSyncManagerTable() const {
  std::printf("static ec_sync_info_t m_pSyncInfoArray[] = {\n");
  for (unsigned int row = 0; row < m_uiSyncInfoCount; ++row) {
    const ec_sync_info_t& sync = m_pSyncInfoArray[row];
    std::printf("    {%d, %s, %d, &m_pPDOInfoArray[%d]}, \n", sync.index,
                sync.dir == EC_DIR_OUTPUT ? "EC_DIR_OUTPUT" : "EC_DIR_INPUT", static_cast<int>(sync.n_pdos),
                static_cast<int>(sync.pdos - m_pPDOInfoArray.get()));
  }
  std::printf("    {0xff}\n};\n\n");
}
