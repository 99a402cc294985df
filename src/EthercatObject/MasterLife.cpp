// Construction, destruction and the simple queries of a master.
#include "EthercatObject/CEthercatMaster.h"

CEthercatMaster::CEthercatMaster(unsigned int deviceId, unsigned int period, bool enableDc,
                                 bool syncToReferenceClock, LOG_FUNCTION log)
    : m_uiExchangePeriod(period), m_clock(period, enableDc, syncToReferenceClock),
      m_pENIObject(std::make_unique<CMasterENIObject>(log)), m_reservation(deviceId), m_pfnLog(log),
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
  m_sdoHandles.clear();
  m_sdoCursor.reset();
}

unsigned int CEthercatMaster::getMasterState() const {
  return isScanned() ? m_watch.alStates() : 0;
}

bool CEthercatMaster::setExchangeMode(bool exchangeMode) {
  if (m_reservation.isActive()) {
    return false;
  }
  m_bExchangeMode = exchangeMode;
  return true;
}

bool CEthercatMaster::enableEoeFunction(unsigned int /*slave*/, bool /*enable*/) {
  return false;
}

namespace {

void writeIfWanted(unsigned int* out, unsigned int value) {
  if (out != nullptr) {
    *out = value;
  }
}

} // namespace

bool CEthercatMaster::getSlaveProductCode(unsigned int slave, unsigned int* productCode) const {
  if (slave >= m_vecSlaves.size()) {
    return false;
  }
  writeIfWanted(productCode, m_vecSlaves[slave]->getProductCode());
  return true;
}

bool CEthercatMaster::getSlaveRevisionCode(unsigned int slave, unsigned int* revisionCode) const {
  if (slave >= m_vecSlaves.size()) {
    return false;
  }
  writeIfWanted(revisionCode, m_vecSlaves[slave]->getRevisionCode());
  return true;
}

CSlaveENIObject* CEthercatMaster::descriptionOf(unsigned int slave) const {
  return slave < m_vecSlaves.size() ? m_vecSlaves[slave]->getENIObject() : nullptr;
}

bool CEthercatMaster::writeSlotValue(unsigned int slave, unsigned int (CSlaveENIObject::*getter)() const,
                                     unsigned int* out) const {
  const CSlaveENIObject* const description = descriptionOf(slave);
  if (description == nullptr) {
    return false;
  }
  writeIfWanted(out, (description->*getter)());
  return true;
}

bool CEthercatMaster::getSlaveSlotNumber(unsigned int slave, unsigned int* slotNumber) const {
  return writeSlotValue(slave, &CSlaveENIObject::getSlotNumber, slotNumber);
}

bool CEthercatMaster::getSlaveSlotIndexIncrement(unsigned int slave, unsigned int* increment) const {
  return writeSlotValue(slave, &CSlaveENIObject::getSlotIndexIncrement, increment);
}

bool CEthercatMaster::getSlaveSlotPdoIncrement(unsigned int slave, unsigned int* increment) const {
  return writeSlotValue(slave, &CSlaveENIObject::getSlotPdoIncrement, increment);
}

void CEthercatMaster::clearAllEscErrorRegs() {
  for (const auto& slave : m_vecSlaves) {
    if (m_reservation.device() == -1) {
      return;
    }
    clearEscErrorRegs(static_cast<unsigned short>(slave->getSlaveIndex()));
  }
}
