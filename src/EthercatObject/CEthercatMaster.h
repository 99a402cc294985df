#ifndef ETHERCATOBJECT_CETHERCATMASTER_H
#define ETHERCATOBJECT_CETHERCATMASTER_H

#include "ENIObject/ENIObject.h"
#include "EthercatObject/BusWatch/BusWatch.h"
#include "EthercatObject/CEthercatSlave.h"
#include "EthercatObject/Clock/MasterClock.h"
#include "EthercatObject/HandleTable.h"
#include "EthercatObject/KeyOrder.h"
#include "EthercatObject/ProcessImage/PdoBuffers.h"
#include "EthercatObject/Registers/EscRegisters.h"
#include "EthercatObject/Reservation/Reservation.h"
#include "EthercatObject/Sdo/IssuedSdos.h"
#include "EthercatObject/Sdo/SdoCursor.h"
#include "EthercatObject/Sdo/SdoInfo.h"
#include "EthercatObject/Timing/CommDiag.h"

#include <ecrt.h>
#include <igh_master.h>
#include <memory>
#include <string>
#include <vector>

// One EtherCAT master: its reservation at the platform, the slaves of the last scan, the process-data handles
// and the cycle. Made and destroyed by CEthercatMasterManager only. Nothing is locked: one thread sets up,
// and while exchange() runs in the real-time task nothing else does.
class CEthercatMaster {
public:
  using ERROR_CALLBACK = CBusWatch::ERROR_CALLBACK;
  typedef void (*EXCHANGE_CALLBACK)(void* userData);

  using _SDO_INFO_KEY = ::_SDO_INFO_KEY;
  using _SDO_INFO_OBJECT = ::_SDO_INFO_OBJECT;
  struct _PDO_ENTRY_INFO_KEY {
    unsigned int slave = 0;
    std::string name;
    // -1, 0 or 1: by slave, then bytewise by name.
    static int compare(const _PDO_ENTRY_INFO_KEY& a, const _PDO_ENTRY_INFO_KEY& b);
  };

  struct _PDO_ENTRY_INFO_OBJECT {
    ETHERCAT_DATA_TYPE dataType = DATA_TYPE_INVALID;
    const ec_pdo_entry_reg_t* registration = nullptr; // of the description; null: the slot is free
    _HANDLE_USERS users;
    unsigned int inputPosition = 0;  // in the master's input block
    unsigned int outputPosition = 0; // in the master's output block
    unsigned long size = 0;          // bytes, 0 for a type without conversion
    const _PDO_ENTRY_OFFSET* offset = nullptr;

    bool isFree() const { return registration == nullptr; }
    void reset() { resetPdoInfo(); }
    void resetPdoInfo() { *this = _PDO_ENTRY_INFO_OBJECT(); }
    unsigned long getPdoBufLen() const { return size; }
    // Type and size from the type name of a description; false for a name without conversion.
    bool initPdoEntryDataType(const std::string& typeName);
  };

  CEthercatMaster(unsigned int deviceId, unsigned int period, bool enableDc, bool syncToReferenceClock,
                  LOG_FUNCTION log);
  ~CEthercatMaster();
  CEthercatMaster(const CEthercatMaster&) = delete;
  CEthercatMaster& operator=(const CEthercatMaster&) = delete;

  // Life and queries (MasterLife.cpp)
  void destroyMasterData();
  void clearAllSlaveObject();
  unsigned int getDeviceId() const { return m_reservation.deviceId(); }
  unsigned int getExchangePeriod() const { return m_uiExchangePeriod; }
  long long getSystemBaseOffsetNs() const { return m_clock.systemBaseOffsetNs(); }
  ec_master_t* getMasterCore() const { return m_reservation.master(); }
  CMasterENIObject* getENIObject() const { return m_pENIObject.get(); }
  unsigned int getMasterState() const;
  bool setErrorCallback(ERROR_CALLBACK callback, void* userData) {
    m_watch.setErrorCallback(callback, userData);
    return true;
  }
  bool setExchangeMode(bool exchangeMode);
  bool setDcDebugEnable(bool enable) {
    m_clock.setDebug(enable);
    return true;
  }
  // Also from another thread or a signal handler.
  void requestTerminate() { m_watch.requestTerminate(); }
  bool isRequestTerminate() const { return m_watch.isRequestTerminate(); }
  bool resetErrorCode() {
    m_watch.resetError();
    return true;
  }
  void getLastError(int& error) const { error = m_watch.lastError(); }
  bool enableEoeFunction(unsigned int slave, bool enable);
  bool getSlaveProductCode(unsigned int slave, unsigned int* productCode) const;
  bool getSlaveRevisionCode(unsigned int slave, unsigned int* revisionCode) const;
  bool getSlaveSlotNumber(unsigned int slave, unsigned int* slotNumber) const;
  bool getSlaveSlotIndexIncrement(unsigned int slave, unsigned int* increment) const;
  bool getSlaveSlotPdoIncrement(unsigned int slave, unsigned int* increment) const;

  // Bus scan (MasterScan.cpp)
  bool scanEthercatSlave(unsigned int* slaveCount);
  void dispConfiguration() const;

  // Configuration and activation (MasterActivation.cpp, MasterRegistration.cpp)
  bool configSlave(unsigned int slaveIndex);
  void configAllSlaves();
  bool active();
  int deactive();

  // The cycle (MasterExchange.cpp)
  void exchange(EXCHANGE_CALLBACK callback, void* userData);
  void processSlaveError(unsigned int slave, int errorCode) { m_watch.report(slave, errorCode); }
  bool getCommDiagInfo(unsigned int index, _ETHERCAT_COMM_DIAG_INFO* out) const {
    return m_commDiag.get(index, out);
  }
  void outputCommDiagInfo(const char* title, const _ETHERCAT_COMM_DIAG_INFO* info) const {
    CCommDiag::print(title, info);
  }

  // Process-data handles (MasterProcessData.cpp)
  bool createPdoInfo(unsigned int slave, const char* name, bool read, unsigned int* id);
  void destroyPdoInfo(unsigned int id, bool read);
  bool readPdo(unsigned int id, double* value);
  bool writePdo(unsigned int id, double value);

  // SDO requests (MasterSdo.cpp). Sizes in bytes, time-outs in ms; slaves beyond 254 have none.
  bool createRawSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                           ETHERCAT_DATA_TYPE type, unsigned long size, int timeout, bool read,
                           unsigned int* id);
  bool createSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                        ETHERCAT_DATA_TYPE type, int timeout, bool read, unsigned int* id);
  bool createSdoRequestEx(unsigned int slave, unsigned short index, unsigned char subindex,
                          ETHERCAT_DATA_TYPE type, unsigned int count, int timeout, bool read,
                          unsigned int* id);
  bool createRawSdoRequestComplete(unsigned int slave, unsigned short index, ETHERCAT_DATA_TYPE type,
                                   unsigned long size, int timeout, bool read, unsigned int* id);
  void destroySdoRequest(unsigned int id, bool read);

  // SDO transfers (MasterSdoTransfer.cpp): armed here, carried out by the exchange; *done tells the end.
  bool readSdo(unsigned int id, double* value, bool* done);
  bool readSdoEx(unsigned int id, double* values, unsigned int count, bool* done);
  bool writeSdo(unsigned int id, double value, bool* done);
  bool writeSdoEx(unsigned int id, const double* values, unsigned int count, bool* done);
  bool rawSdoRecv(unsigned int id, void* data, unsigned int size, bool* done);
  bool rawSdoSend(unsigned int id, const void* data, unsigned int size, bool* done);
  bool processSdoImmediately(unsigned int id);

  // ESC registers through the device file. Blocking; not for the cycle.
  bool readEscReg(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size) {
    return CEscRegisters(m_reservation.device()).read(slave, address, data, size);
  }
  bool writeEscReg(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size) {
    return CEscRegisters(m_reservation.device()).write(slave, address, data, size);
  }
  bool requestEscState(unsigned short slave, unsigned char state) {
    return CEscRegisters(m_reservation.device()).requestState(slave, state);
  }
  bool clearEscErrorRegs(unsigned short slave) {
    return CEscRegisters(m_reservation.device()).clearErrors(slave);
  }
  void clearAllEscErrorRegs();

private:
  CSlaveENIObject* descriptionOf(unsigned int slave) const; // null also for a slave out of range
  bool writeSlotValue(unsigned int slave, unsigned int (CSlaveENIObject::*getter)() const,
                      unsigned int* out) const;

  // Scan
  struct _SCAN {
    std::vector<std::unique_ptr<CEthercatSlave>> slaves;
    unsigned int entryCount = 0;
    std::vector<std::string> entryNames;
    std::vector<unsigned char> entryBits;
    std::unique_ptr<ec_pdo_entry_reg_t[]> entryRegs;
  };
  void readSlaves(_SCAN& scan);
  void addSlave(_SCAN& scan, unsigned int index, const ec_slave_info_t& info);
  static void buildRegistrationList(_SCAN& scan);
  static void appendEntryBits(const CEthercatSlave& slave, std::vector<unsigned char>& bits);
  static std::string entryName(const CSlaveENIObject& description, unsigned int entry);
  void printRegistrationList() const;

  // Activation
  bool allSlavesConfigured() const;
  bool activateOnce();
  bool activateOnNewReservation();
  bool registerProcessData();
  bool imageIsMissing() const;
  unsigned int measureImage() const;
  unsigned char* readImageAddress() const;
  void setUpDistributedClocks();
  void resetCycleState();
  void reconfigureSlaves();
  void dropConfigurations();
  void deactivatePlatform();

  // Cycle
  void receiveFrame();
  bool readWorkingCounter(bool& complete) const;
  void checkWorkingCounter();
  void checkSlaves();
  void runCallback(EXCHANGE_CALLBACK callback, void* userData, _CYCLE_STAMPS& stamps);
  void sendFrame();
  void syncDistributedClocks() { m_clock.handOver(m_reservation.master()); }
  void updateMasterClock() { m_clock.adjust(m_watch.alStates(), m_watch.isExchanging()); }
  void awaitFrame(EXCHANGE_CALLBACK callback, void* userData, _CYCLE_STAMPS& stamps);

  // SDO
  static bool checkSdoSize(ETHERCAT_DATA_TYPE type, unsigned long size);
  // 0, which fits no request, when the product does not fit 32 bits.
  static unsigned int sdoSizeOf(ETHERCAT_DATA_TYPE type, unsigned int count);
  bool createSdo(const _SDO_INFO_KEY& key, ETHERCAT_DATA_TYPE type, unsigned long size, int timeout,
                 bool read, unsigned int* id, const char* sizeText, const char* failureText);
  bool requestSdo(const _SDO_INFO_KEY& key, _SDO_INFO_OBJECT& object);
  void renewSdoRequests();
  void dropSdoRequests();
  _SDO_INFO_OBJECT* armable(unsigned int id, bool read, const void* data);
  static bool isArmableWith(const _SDO_INFO_OBJECT& object, bool read, unsigned long size);
  void armRead(_SDO_INFO_OBJECT& object, ETHERCAT_DATA_TYPE destinationType, void* destination, bool* done);
  void armWrite(_SDO_INFO_OBJECT& object, bool* done);
  void serviceSdoRequests();
  void serviceSdo(_SDO_INFO_OBJECT& object, bool read);
  void issueSdo(_SDO_INFO_OBJECT& object, bool read);
  void awaitSdoTransfers();
  void reportSdo(const char* text) const;
  void moveToNextSdoId();

  // Process data
  void copyInputs();
  void copyOutputs();
  void arrangeProcessData();
  unsigned int bytesInImage(const _PDO_ENTRY_INFO_OBJECT& object) const;
  static std::string entryTypeName(const CSlaveENIObject& description, unsigned int entry);

  bool m_bExchangeMode = false;
  unsigned int m_uiExchangePeriod; // ns
  unsigned long long m_ullCycleCounter = 0;
  CMasterClock m_clock;
  ec_domain_t* m_pDomain = nullptr;
  unsigned char* m_pDomainData = nullptr;
  unsigned int m_uiImageSize = 0; // bytes of the image that registered entries are known to reach
  std::unique_ptr<CMasterENIObject> m_pENIObject;
  CReservation m_reservation; // nothing that may fail is made behind it
  std::vector<std::unique_ptr<CEthercatSlave>> m_vecSlaves;
  unsigned int m_uiPdoEntryCount = 0;
  std::vector<std::string> m_vecPdoEntryNames;
  std::vector<unsigned char> m_vecPdoEntryBits; // one per row, as names
  std::unique_ptr<ec_pdo_entry_reg_t[]>
      m_pPdoEntryRegs; // m_uiPdoEntryCount rows and a zero row; null before a scan
  std::vector<_PDO_ENTRY_INFO_OBJECT> m_vecPdoInfo; // by handle
  unsigned int m_uiPdoInfoCount = 0; // the handle from which on the next free one is looked for
  CHandleTable<_PDO_ENTRY_INFO_KEY, _PDO_ENTRY_INFO_OBJECT> m_pdoHandles{m_vecPdoInfo, m_uiPdoInfoCount};
  std::vector<_SDO_INFO_OBJECT> m_vecSdoInfo; // by handle
  unsigned int m_uiSdoInfoCount = 0;          // as for process data
  CHandleTable<_SDO_INFO_KEY, _SDO_INFO_OBJECT> m_sdoHandles{m_vecSdoInfo, m_uiSdoInfoCount};
  CSdoCursor m_sdoCursor;
  CIssuedSdos m_issuedSdos;
  CPdoBuffers m_inputs;
  CPdoBuffers m_outputs;
  bool m_bArrangementStale = false; // handles changed since the buffers were arranged
  LOG_FUNCTION m_pfnLog;
  CCommDiag m_commDiag;
  CBusWatch m_watch;
};

#endif
