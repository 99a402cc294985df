#ifndef ETHERCATOBJECT_CETHERCATMASTER_H
#define ETHERCATOBJECT_CETHERCATMASTER_H

#include "ENIObject/ENIObject.h"
#include "EthercatObject/BusWatch/BusWatch.h"
#include "EthercatObject/CEthercatSlave.h"
#include "EthercatObject/Clock/MasterClock.h"
#include "EthercatObject/HandleTable.h"
#include "EthercatObject/KeyOrder.h"
#include "EthercatObject/ProcessImage/Domain.h"
#include "EthercatObject/ProcessImage/PdoHandles.h"
#include "EthercatObject/ProcessImage/RegistrationList.h"
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
  using _PDO_ENTRY_INFO_KEY = ::_PDO_ENTRY_INFO_KEY;
  using _PDO_ENTRY_INFO_OBJECT = ::_PDO_ENTRY_INFO_OBJECT;

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

  // Process-data handles
  bool createPdoInfo(unsigned int slave, const char* name, bool read, unsigned int* id) {
    return m_reservation.master() != nullptr && name != nullptr && id != nullptr &&
           slave < m_vecSlaves.size() && m_pdoHandles.create(*m_vecSlaves[slave], name, read, id);
  }
  void destroyPdoInfo(unsigned int id, bool read) {
    if (m_reservation.master() != nullptr) {
      m_pdoHandles.destroy(id, read);
    }
  }
  bool readPdo(unsigned int id, double* value) {
    return isScanned() && value != nullptr && m_pdoHandles.read(id, value);
  }
  bool writePdo(unsigned int id, double value) { return isScanned() && m_pdoHandles.write(id, value); }

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

  bool isScanned() const { return m_reservation.master() != nullptr && m_registration.isBuilt(); }
  SLAVE_LIST readSlaves();
  std::unique_ptr<CEthercatSlave> makeSlave(unsigned int index, const ec_slave_info_t& info);

  // Activation
  bool allSlavesConfigured() const;
  bool activateOnce();
  bool activateOnNewReservation();
  bool imageIsMissing() const;
  void setUpDistributedClocks();
  void resetCycleState();
  void reconfigureSlaves();
  void dropConfigurations();
  void deactivatePlatform();

  // Cycle
  void receiveFrame();
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

  bool m_bExchangeMode = false;
  unsigned int m_uiExchangePeriod; // ns
  unsigned long long m_ullCycleCounter = 0;
  CMasterClock m_clock;
  std::unique_ptr<CMasterENIObject> m_pENIObject;
  CReservation m_reservation; // nothing that may fail is made behind it
  SLAVE_LIST m_vecSlaves;
  CRegistrationList m_registration;
  CDomain m_domain;
  CPdoHandles m_pdoHandles;
  CHandleTable<_SDO_INFO_KEY, _SDO_INFO_OBJECT> m_sdoHandles;
  CSdoCursor m_sdoCursor;
  CIssuedSdos m_issuedSdos;
  LOG_FUNCTION m_pfnLog;
  CCommDiag m_commDiag;
  CBusWatch m_watch;
};

#endif
