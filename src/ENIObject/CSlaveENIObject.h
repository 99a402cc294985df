#ifndef ENIOBJECT_CSLAVEENIOBJECT_H
#define ENIOBJECT_CSLAVEENIOBJECT_H

#include "ENIObject/Report.h"

#include <ecrt.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// What a description file says of one device type. Filled between beginEditSyncInfo and endEditSyncInfo,
// which turns the collected sync managers, PDOs and entries into the flat arrays that the IgH master takes;
// read only afterwards. The flat position of an entry is its place in the entry array, the registration list
// and the tables of names and types alike: ascending sync manager, ascending PDO index, entries as added.
class CSlaveENIObject {
public:
  struct _PDOENTRYINFO {
    std::string strName;
    std::string strDataType; // as written in the file
    ec_pdo_entry_info_t entry;
  };

  struct _PDOINFO {
    std::vector<_PDOENTRYINFO> listEntry; // as added
  };

  struct _SYNCINFO {
    std::map<unsigned int, _PDOINFO> mapPDOInfo; // by PDO index
    std::vector<unsigned int> vecPDOIndex;       // its keys; sorted when editing ends
    bool bOutput;                                // true: from the master to the slave
  };

  // The five values of ecrt_slave_config_dc, in ns but for the first.
  struct _DCOPMODEINFO {
    unsigned short assignActivate;
    unsigned int cycleTimeSync0;
    int shiftTimeSync0;
    unsigned int cycleTimeSync1;
    int shiftTimeSync1;
  };

  using DC_OP_MODES = std::map<std::string, _DCOPMODEINFO, std::less<>>;

  // `log` may be null.
  CSlaveENIObject(unsigned int vendorId, unsigned int productCode, unsigned int revisionCode,
                  std::string smClassName, LOG_FUNCTION log);
  ~CSlaveENIObject();
  CSlaveENIObject(const CSlaveENIObject&) = delete;
  CSlaveENIObject& operator=(const CSlaveENIObject&) = delete;

  // Drops everything of the last edit but the op modes and the memory of the entry names in use.
  void destroyAllSyncInfo();

  // False, and nothing changed, while editing.
  bool beginEditSyncInfo();

  // All three are false when not editing. A sync manager that exists with the other direction is reported and
  // refused; what exists already is a success.
  bool createSyncInfoIfNotExist(unsigned int syncIndex, bool output);
  bool createOutputSyncInfoIfNotExist(unsigned int syncIndex) {
    return createSyncInfoIfNotExist(syncIndex, true);
  }
  bool createInputSyncInfoIfNotExist(unsigned int syncIndex) {
    return createSyncInfoIfNotExist(syncIndex, false);
  }

  // Records under construction, alive until endEditSyncInfo. Null for an unknown index.
  _SYNCINFO* getSyncInfo(unsigned int syncIndex);
  bool createPDOInfoIfNotExist(_SYNCINFO* syncInfo, unsigned int pdoIndex);
  _PDOINFO* getPDOInfo(_SYNCINFO* syncInfo, unsigned int pdoIndex);

  // Appends; names may repeat. False when not editing.
  bool addPDOEntry(_PDOINFO* pdoInfo, std::string name, std::string dataType,
                   const ec_pdo_entry_info_t& entry);

  // False for a null name and one that exists: the first definition stays. Needs no editing.
  bool addDcOpMode(const char* name, const _DCOPMODEINFO& info);

  // Builds the arrays and indexes, frees the records under construction. A name that occurs again is reported
  // and means the later entry. Does nothing when not editing.
  void endEditSyncInfo();

  unsigned int getVendorId() const { return m_uiVendorId; }
  unsigned int getProductCode() const { return m_uiProductCode; }
  unsigned int getRevisionCode() const { return m_uiRevisionCode; }

  // The strings follow the size protocol of getBaseStringFromSTLString. `position` is flat and not checked:
  // stay below getSlavePDOEntryCount.
  bool getSmClassName(char* buffer, unsigned long& size) const;
  bool getPDOEntryName(unsigned int position, char* buffer, unsigned long& size) const;
  bool getPDOEntryDataType(unsigned int position, char* buffer, unsigned long& size) const;

  unsigned int getSlavePDOEntryCount() const { return m_uiPDOEntryCount; }

  // The arrays stay this object's and live until the next beginEditSyncInfo; null before the first
  // endEditSyncInfo. The sync managers end with index 0xff, the registration list with a zero row.
  ec_sync_info_t* getSlaveSyncInfo() const { return m_pSyncInfoArray.get(); }
  ec_pdo_entry_reg_t* getSlavePDOEntryReg() const { return m_pPDOEntryReg.get(); }

  // The registration row of the entry of exactly this name, and its flat position. Null, and `position`
  // untouched, when there is none.
  ec_pdo_entry_reg_t* getSlavePDOEntryReg(const char* name, unsigned long& position) const;

  // False, and nothing written, for a null name or an unknown op mode.
  bool getDCConfiguration(const char* opModeName, unsigned short& assignActivate,
                          unsigned int& cycleTimeSync0, int& shiftTimeSync0, unsigned int& cycleTimeSync1,
                          int& shiftTimeSync1) const;

  const DC_OP_MODES& getDcOpModes() const { return m_mapDcOpMode; }

  // Prints the tables chosen by the bits of `tables` to standard output: 1 registration list, 2 entries, 4
  // PDOs, 8 sync managers.
  void syncInfoPrintf(int tables) const;

  void setSlotNumber(unsigned int slotNumber) { m_uiSlotNumber = slotNumber; }
  unsigned int getSlotNumber() const { return m_uiSlotNumber; }
  void setSlotIndexIncrement(unsigned int increment) { m_uiSlotIndexIncrement = increment; }
  unsigned int getSlotIndexIncrement() const { return m_uiSlotIndexIncrement; }
  void setSlotPdoIncrement(unsigned int increment) { m_uiSlotPdoIncrement = increment; }
  unsigned int getSlotPdoIncrement() const { return m_uiSlotPdoIncrement; }

  // A null buffer sets `size` to the length + 1; a buffer of at least that size receives the text with its
  // NUL, and `size` is set to length + 1; a smaller one gives false, nothing changed.
  static bool getBaseStringFromSTLString(const std::string& text, char* buffer, unsigned long& size);

private:
  void sortIndexes();
  void countSyncInfo();
  void allocateArrays();
  void fillSyncManagers();
  void fillEntry(_PDOENTRYINFO& entryInfo, unsigned int position);
  void indexEntryName(unsigned int position);

  void printRegistrationTable() const;
  void printEntryTable() const;
  void printPDOTable() const;
  void printSyncManagerTable() const;

  bool m_bEditing = false;
  DC_OP_MODES m_mapDcOpMode;
  std::map<unsigned int, _SYNCINFO> m_mapSyncInfo; // by sync manager, only while editing
  std::vector<unsigned int> m_vecSyncIndex;        // its keys; sorted when editing ends

  // Keeps its names, but no valid pointers, when the object is edited again.
  std::map<std::string, ec_pdo_entry_info_t*, std::less<>> m_mapEntryInfoByName;
  std::map<std::string, ec_pdo_entry_reg_t*, std::less<>> m_mapEntryRegByName;
  std::map<std::string, unsigned long, std::less<>> m_mapEntryIndexByName; // flat position
  std::vector<std::string> m_vecEntryName;
  std::vector<std::string> m_vecEntryDataType;

  unsigned int m_uiVendorId;
  unsigned int m_uiProductCode;
  unsigned int m_uiRevisionCode;
  std::string m_strSmClassName;

  // Never resized after a pointer into them is out.
  unsigned int m_uiPDOEntryCount = 0;
  std::unique_ptr<ec_pdo_entry_info_t[]> m_pPDOEntryArray;
  unsigned int m_uiPDOInfoCount = 0;
  std::unique_ptr<ec_pdo_info_t[]> m_pPDOInfoArray;
  unsigned int m_uiSyncInfoCount = 0;
  std::unique_ptr<ec_sync_info_t[]> m_pSyncInfoArray;
  std::unique_ptr<ec_pdo_entry_reg_t[]> m_pPDOEntryReg;

  LOG_FUNCTION m_pfnLog;
  unsigned int m_uiSlotNumber = 1;
  unsigned int m_uiSlotIndexIncrement = 0;
  unsigned int m_uiSlotPdoIncrement = 0;
};

#endif
