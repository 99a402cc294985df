#ifndef ETHERCATOBJECT_CETHERCATSLAVE_H
#define ETHERCATOBJECT_CETHERCATSLAVE_H

#include "ENIObject/ENIObject.h"

#include <ecrt.h>
#include <memory>
#include <vector>

class CEthercatMaster;

// Where an entry lies in the domain image; filled by the platform at registration.
struct _PDO_ENTRY_OFFSET {
  unsigned int offset = 0;      // bytes
  unsigned int bitPosition = 0; // inside that byte
};

// One slave found by the scan. The description belongs to the master's store; the slave configuration belongs
// to the platform and dies with every deactivation.
class CEthercatSlave {
public:
  CEthercatSlave(CEthercatMaster* master, unsigned int index, unsigned int alias, unsigned int position,
                 CSlaveENIObject* description, LOG_FUNCTION log);
  // A slave without description ("switcher"): takes no process data.
  CEthercatSlave(CEthercatMaster* master, unsigned int index, unsigned int alias, unsigned int position,
                 unsigned int vendorId, unsigned int productCode, unsigned int revisionCode,
                 LOG_FUNCTION log);
  CEthercatSlave(const CEthercatSlave&) = delete;
  CEthercatSlave& operator=(const CEthercatSlave&) = delete;

  // Asks the platform for a configuration and hands it the sync managers. False, with a line on standard
  // error, when either is refused; without a configuration nothing is handed over.
  bool configEthercatSlave();
  // For after a deactivation, which frees the configuration behind our back.
  void dropConfiguration();
  // The application has asked for a configuration, though the platform may have refused it.
  bool isConfigurationWanted() const { return m_bConfigurationWanted; }
  // The platform took the description's sync managers; otherwise its own defaults for the slave are in force.
  bool isLayoutTaken() const { return m_bLayoutTaken; }
  // Period in ns. True when the description has an operation mode "DC" that switches the clock on.
  bool initEthercatSlaveDC(unsigned int period);
  bool setAsReferenceClock();
  void destroySlaveData() { m_pPdoEntryOffsets.reset(); }

  CEthercatMaster* getEthercatMaster() const { return m_pEthercatMaster; }
  ec_slave_config_t* getSlaveCore() const { return m_pSlaveConfig; }
  unsigned int getSlaveIndex() const { return m_uiSlaveIndex; }
  unsigned int getSlaveAlias() const { return m_uiAlias; }
  unsigned int getSlavePosition() const { return m_uiPosition; }
  unsigned int getVendorId() const { return m_uiVendorId; }
  unsigned int getProductCode() const { return m_uiProductCode; }
  unsigned int getRevisionCode() const { return m_uiRevisionCode; }
  CSlaveENIObject* getENIObject() const { return m_pENIObject; }
  unsigned int getPdoEntryCount() const;
  // Null for a slave without description or an entry beyond its count.
  _PDO_ENTRY_OFFSET* getPdoEntryOffset(unsigned int entry) const;

private:
  unsigned int m_uiSlaveIndex;
  unsigned int m_uiAlias;
  unsigned int m_uiPosition;
  unsigned int m_uiVendorId;
  unsigned int m_uiProductCode;
  unsigned int m_uiRevisionCode;
  CEthercatMaster* m_pEthercatMaster;
  ec_slave_config_t* m_pSlaveConfig = nullptr;
  bool m_bConfigurationWanted = false;
  bool m_bLayoutTaken = false;
  CSlaveENIObject* m_pENIObject;
  std::unique_ptr<_PDO_ENTRY_OFFSET[]> m_pPdoEntryOffsets;
  [[maybe_unused]] LOG_FUNCTION m_pfnLog; // kept with the slave; nothing here has a text for it yet
};

using SLAVE_LIST = std::vector<std::unique_ptr<CEthercatSlave>>;

#endif
