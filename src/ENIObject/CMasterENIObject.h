#ifndef ENIOBJECT_CMASTERENIOBJECT_H
#define ENIOBJECT_CMASTERENIOBJECT_H

#include "ENIObject/CSlaveENIObject.h"
#include "ENIObject/CXmlParser.h"
#include "ENIObject/Report.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// An entry, PDO and module as a module description gives them, before a slot places them. A slot-dependent
// index grows from slot to slot by the device's increments.
struct _PdoEntryInfoTemplate {
  bool bDependOnSlot;
  ec_pdo_entry_info_t entry;
  std::string strName;
  std::string strDataType;
};

struct _PdoInfoTemplate {
  unsigned int uiIndex;
  unsigned int uiSync;
  bool bDependOnSlot;
  std::vector<_PdoEntryInfoTemplate> vecEntry;
};

struct _SlotENIInfo {
  unsigned int uiNameId;
  unsigned int uiModuleIdent;
  std::vector<_PdoInfoTemplate> vecRxPdo;
  std::vector<_PdoInfoTemplate> vecTxPdo;
};

struct _ProductENIObject {
  std::map<unsigned int, CSlaveENIObject*> mapRevision; // owned by the store
};

struct _VendorENIObject {
  std::map<unsigned int, _ProductENIObject> mapProduct;
};

// Every device description that a master knows. One thread at a time.
class CMasterENIObject {
public:
  // `log` may be null.
  explicit CMasterENIObject(LOG_FUNCTION log);
  ~CMasterENIObject();
  CMasterENIObject(const CMasterENIObject&) = delete;
  CMasterENIObject& operator=(const CMasterENIObject&) = delete;

  // Adds the devices and modules of one description file. The first description of a revision, from whichever
  // file, wins. 0, with a report and the descriptions as they were, when the file cannot be read, is no
  // EtherCATInfo document or names no vendor; they are also as they were after an exception. replace: the
  // descriptions so far are no longer found (they stay alive, slaves may refer to them).
  unsigned int insertENIFile(const char* path, bool replace);

  // The description of exactly this device, which stays the store's; null when there is none.
  CSlaveENIObject* findSlaveENIObject(unsigned int vendorId, unsigned int productCode,
                                      unsigned int revisionNo) const;

  // Deletes every description and forgets every module.
  void removeAllENIObject();

  // For programs that show what was loaded.
  const std::map<unsigned int, _VendorENIObject>& getVendors() const { return m_mapVendor; }
  const std::map<unsigned int, _SlotENIInfo>& getModules() const { return m_mapModule; }

  // "#x1A", "0x1A" and "26" are 26; "010" is octal; anything else is what strtoul makes of it, cut to 32
  // bits. Null is 0.
  static unsigned int resolveENIValue(const char* text);

  // "1st ", "2nd ", "3rd ", then "4th " for every n; empty for 0.
  static std::string formatSeqInEnglish(unsigned int n);

private:
  // Orders by product code alone.
  struct CDeviceKey {
    unsigned int uiProductCode;
    bool operator<(const CDeviceKey& other) const { return uiProductCode < other.uiProductCode; }
  };
  using REVISIONS_BY_PRODUCT = std::map<CDeviceKey, std::set<unsigned int>>;

  struct _DeviceIdentity; // as messages name a device
  struct _PdoDirection;   // what tells reading a receive PDO from reading a transmit PDO
  static const _PdoDirection PDO_DIRECTIONS[2];

  // What the file that is being read has added, beyond the first `known` descriptions.
  void forgetNew(std::size_t known) noexcept;
  unsigned int resolveFile(xml_file_handle* handle, const char* path);
  unsigned int resolveEthercatInfo(CXmlParser& parser, _XmlNode* root);
  bool resolveVendorInfo(CXmlParser& parser, _XmlNode* vendorNode, unsigned int& vendorId,
                         std::string& vendorName);
  bool resolveDeviceInfo(CXmlParser& parser, _XmlNode* device, unsigned int& productCode,
                         unsigned int& revisionNo, std::string& typeName);
  bool resolveDeviceInfo(CXmlParser& parser, _XmlNode* device, unsigned int& productCode,
                         unsigned int& revisionNo, std::string& typeName,
                         std::set<unsigned int>& hiddenRevisions);

  void resolveModules(CXmlParser& parser, _XmlNode* descriptions);
  void collectRevisions(CXmlParser& parser, _XmlNode* descriptions, REVISIONS_BY_PRODUCT& found,
                        REVISIONS_BY_PRODUCT& hidden);
  void resolveVisibleDevices(CXmlParser& parser, _XmlNode* descriptions, unsigned int vendorId,
                             const REVISIONS_BY_PRODUCT& visible);

  unsigned int resolveModuleInfo(CXmlParser& parser, _XmlNode* module);
  void resolveModulePdos(CXmlParser& parser, _XmlNode* module, const _PdoDirection& direction,
                         std::vector<_PdoInfoTemplate>& templates);
  static _PdoEntryInfoTemplate resolveEntry(CXmlParser& parser, _XmlNode* entryNode);

  unsigned int resolveDeviceDetail(CXmlParser& parser, _XmlNode* device, unsigned int vendorId);
  void resolveSlots(CXmlParser& parser, _XmlNode* slots, const _DeviceIdentity& identity,
                    CSlaveENIObject& slave);
  static void placeModule(const _SlotENIInfo& module, const std::string& namePrefix, unsigned int pdoOffset,
                          unsigned int indexOffset, CSlaveENIObject& slave);
  void resolveDevicePdos(CXmlParser& parser, _XmlNode* device, const _PdoDirection& direction,
                         const _DeviceIdentity& identity, CSlaveENIObject& slave);
  static void resolveDcOpModes(CXmlParser& parser, _XmlNode* device, CSlaveENIObject& slave);
  void reportDevice(unsigned int level, const char* text, const _DeviceIdentity& identity,
                    const char* end = "") const;

  std::map<unsigned int, _SlotENIInfo> m_mapModule; // by module ident; grows from file to file
  std::vector<unsigned int> m_vecNewModule;         // idents that the file being read has added
  std::map<unsigned int, _VendorENIObject> m_mapVendor;
  LOG_FUNCTION m_pfnLog;

  std::vector<std::unique_ptr<CSlaveENIObject>> m_vecDescription; // owns what m_mapVendor points to
  std::size_t m_ulPlacementBudget = 0; // bytes that the slots of the file being read may still expand to
};

#endif
