#ifndef ETHERCATOBJECT_CETHERCATMASTER_H
#define ETHERCATOBJECT_CETHERCATMASTER_H

#include "ENIObject/ENIObject.h"
#include "EthercatObject/BusWatch/BusWatch.h"
#include "EthercatObject/Clock/MasterClock.h"
#include "EthercatObject/ProcessImage/Domain.h"
#include "EthercatObject/ProcessImage/PdoHandles.h"
#include "EthercatObject/ProcessImage/RegistrationList.h"
#include "EthercatObject/Reservation/Reservation.h"
#include "EthercatObject/Sdo/SdoRequests.h"
#include "EthercatObject/Sdo/SdoService.h"
#include "EthercatObject/Slave/CEthercatSlave.h"
#include "EthercatObject/Timing/CommDiag.h"

#include <ecrt.h>
#include <igh_master.h>
#include <memory>

// One EtherCAT master, made of parts that know nothing of each other: it holds them, hands each what it
// needs, and keeps the order of things. Made and destroyed by CEthercatMasterManager only. Nothing is locked:
// one thread sets up, and while exchange() runs in the real-time task nothing else does.
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

  // MasterLife.cpp
  void destroyMasterData();
  void clearAllSlaveObject();
  unsigned int getDeviceId() const { return m_reservation.deviceId(); }
  unsigned int getExchangePeriod() const { return m_uiExchangePeriod; }
  long long getSystemBaseOffsetNs() const { return m_clock.systemBaseOffsetNs(); }
  ec_master_t* getMasterCore() const { return m_reservation.master(); }
  CMasterENIObject* getENIObject() const { return m_pENIObject.get(); }
  unsigned int getMasterState() const { return isScanned() ? m_watch.alStates() : 0; }
  bool setErrorCallback(ERROR_CALLBACK callback, void* userData);
  bool setExchangeMode(bool exchangeMode);
  bool setDcDebugEnable(bool enable);
  void requestTerminate() { m_watch.requestTerminate(); } // also from another thread or a signal handler
  bool isRequestTerminate() const { return m_watch.isRequestTerminate(); }
  bool resetErrorCode();
  void getLastError(int& error) const { error = m_watch.lastError(); }
  bool enableEoeFunction(unsigned int slave, bool enable);
  // ESC registers and state requests through the device file. Blocking; not for the cycle.
  bool readEscReg(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size);
  bool writeEscReg(unsigned short slave, unsigned short address, unsigned char* data, unsigned long size);
  bool requestEscState(unsigned short slave, unsigned char state);
  bool clearEscErrorRegs(unsigned short slave);
  void clearAllEscErrorRegs();

  // MasterScan.cpp
  bool scanEthercatSlave(unsigned int* slaveCount);
  void dispConfiguration() const;
  bool getSlaveProductCode(unsigned int slave, unsigned int* productCode) const;
  bool getSlaveRevisionCode(unsigned int slave, unsigned int* revisionCode) const;
  bool getSlaveSlotNumber(unsigned int slave, unsigned int* slotNumber) const;
  bool getSlaveSlotIndexIncrement(unsigned int slave, unsigned int* increment) const;
  bool getSlaveSlotPdoIncrement(unsigned int slave, unsigned int* increment) const;

  // MasterActivation.cpp
  bool configSlave(unsigned int slaveIndex);
  void configAllSlaves();
  bool active();
  int deactive();

  // MasterExchange.cpp
  void exchange(EXCHANGE_CALLBACK callback, void* userData);
  void processSlaveError(unsigned int slave, int errorCode) { m_watch.report(slave, errorCode); }
  bool getCommDiagInfo(unsigned int index, _ETHERCAT_COMM_DIAG_INFO* out) const;
  void outputCommDiagInfo(const char* title, const _ETHERCAT_COMM_DIAG_INFO* info) const;

  // MasterHandles.cpp: process data and SDO requests. Sizes in bytes, time-outs in ms; slaves beyond 254 have
  // no requests. Transfers are armed here and carried out by the exchange; *done tells the end.
  bool createPdoInfo(unsigned int slave, const char* name, bool read, unsigned int* id);
  void destroyPdoInfo(unsigned int id, bool read);
  bool readPdo(unsigned int id, double* value) { return isScanned() && m_pdoHandles.read(id, value); }
  bool writePdo(unsigned int id, double value) { return isScanned() && m_pdoHandles.write(id, value); }
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
  bool readSdo(unsigned int id, double* value, bool* done);
  bool readSdoEx(unsigned int id, double* values, unsigned int count, bool* done);
  bool writeSdo(unsigned int id, double value, bool* done);
  bool writeSdoEx(unsigned int id, const double* values, unsigned int count, bool* done);
  bool rawSdoRecv(unsigned int id, void* data, unsigned int size, bool* done);
  bool rawSdoSend(unsigned int id, const void* data, unsigned int size, bool* done);
  bool processSdoImmediately(unsigned int id);

private:
  struct _CYCLE;
  bool isScanned() const { return m_reservation.master() != nullptr && m_registration.isBuilt(); }
  SLAVE_LIST readSlaves();
  std::unique_ptr<CEthercatSlave> makeSlave(unsigned int index, const ec_slave_info_t& info);
  bool activateOnce();
  bool activateOnNewReservation();
  void reconfigureSlaves();
  void setUpDistributedClocks();
  void resetCycleState();
  void deactivatePlatform();
  void awaitSdoTransfers();
  void receiveFrame();
  void receiveLastFrame(_CYCLE& cycle);
  void checkBus();
  void serviceSdo(_CYCLE& cycle);
  void moveProcessData(_CYCLE& cycle);
  void sendFrame(_CYCLE& cycle);
  void syncDistributedClocks() { m_clock.handOver(m_reservation.master()); }
  void updateMasterClock() { m_clock.adjust(m_watch.alStates(), m_watch.isExchanging()); }
  void awaitFrame(_CYCLE& cycle);
  bool createSdo(const _SDO_INFO_KEY& key, const CSdoRequests::_FORM& form, bool read, unsigned int* id);
  _SDO_INFO_OBJECT* sdoToArm(unsigned int id, bool* done);

  unsigned int m_uiExchangePeriod; // ns
  bool m_bExchangeMode = false;
  unsigned long long m_ullCycleCounter = 0;
  LOG_FUNCTION m_pfnLog;
  std::unique_ptr<CMasterENIObject> m_pENIObject;
  CReservation m_reservation; // nothing that may fail is made behind it
  SLAVE_LIST m_vecSlaves;
  CRegistrationList m_registration;
  CDomain m_domain;
  CPdoHandles m_pdoHandles;
  CSdoRequests m_sdoRequests;
  CSdoService m_sdoService;
  CMasterClock m_clock;
  CBusWatch m_watch;
  CCommDiag m_commDiag;
};

#endif
