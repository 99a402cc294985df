// Construction, destruction, switches, and single slaves through the device file.
#include "EthercatObject/CEthercatMaster.h"
#include "EthercatObject/Registers/EscRegisters.h"

CEthercatMaster::CEthercatMaster(unsigned int deviceId, unsigned int period, bool enableDc,
                                 bool syncToReferenceClock, LOG_FUNCTION log)
    : m_uiExchangePeriod(period), m_pfnLog(log), m_pENIObject(std::make_unique<CMasterENIObject>(log)),
      m_reservation(deviceId), m_sdoService(log), m_clock(period, enableDc, syncToReferenceClock),
      m_watch(deviceId) {}

CEthercatMaster::~CEthercatMaster() {
  destroyMasterData();
}

void CEthercatMaster::destroyMasterData() {
  deactive();
  clearAllSlaveObject();
  m_reservation.release();
  m_pENIObject.reset();
}

void CEthercatMaster::clearAllSlaveObject() {
  m_registration.clear();
  m_domain.forgetEntries();
  m_vecSlaves.clear();
  m_pdoHandles.clear();
  m_sdoRequests.clear();
  m_sdoService.reset();
}

bool CEthercatMaster::setErrorCallback(ERROR_CALLBACK callback, void* userData) {
  m_watch.setErrorCallback(callback, userData);
  return true;
}

bool CEthercatMaster::setExchangeMode(bool exchangeMode) {
  if (m_reservation.isActive()) {
    return false;
  }
  m_bExchangeMode = exchangeMode;
  return true;
}

bool CEthercatMaster::setDcDebugEnable(bool enable) {
  m_clock.setDebug(enable);
  return true;
}

bool CEthercatMaster::resetErrorCode() {
  m_watch.resetError();
  return true;
}

bool CEthercatMaster::enableEoeFunction(unsigned int /*slave*/, bool /*enable*/) {
  return false;
}

bool CEthercatMaster::readEscReg(unsigned short slave, unsigned short address, unsigned char* data,
                                 unsigned long size) {
  return CEscRegisters(m_reservation.device()).read(slave, address, data, size);
}

bool CEthercatMaster::writeEscReg(unsigned short slave, unsigned short address, unsigned char* data,
                                  unsigned long size) {
  return CEscRegisters(m_reservation.device()).write(slave, address, data, size);
}

bool CEthercatMaster::requestEscState(unsigned short slave, unsigned char state) {
  return CEscRegisters(m_reservation.device()).requestState(slave, state);
}

bool CEthercatMaster::clearEscErrorRegs(unsigned short slave) {
  return CEscRegisters(m_reservation.device()).clearErrors(slave);
}

void CEthercatMaster::clearAllEscErrorRegs() {
  for (const auto& slave : m_vecSlaves) {
    if (m_reservation.device() == -1) {
      return;
    }
    clearEscErrorRegs(static_cast<unsigned short>(slave->getSlaveIndex()));
  }
}
