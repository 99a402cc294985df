// Handles of process data and of SDO requests, and the forms in which these are created and armed.
#include "EthercatObject/CEthercatMaster.h"
#include "EthercatObject/Sdo/SdoArming.h"

namespace {

constexpr unsigned int MAX_SLAVE = 254;

} // namespace

bool CEthercatMaster::createPdoInfo(unsigned int slave, const char* name, bool read, unsigned int* id) {
  return m_reservation.master() != nullptr && name != nullptr && id != nullptr &&
         slave < m_vecSlaves.size() && m_pdoHandles.create(*m_vecSlaves[slave], name, read, id);
}

void CEthercatMaster::destroyPdoInfo(unsigned int id, bool read) {
  if (m_reservation.master() != nullptr) {
    m_pdoHandles.destroy(id, read);
  }
}

bool CEthercatMaster::createSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                                       ETHERCAT_DATA_TYPE type, int timeout, bool read, unsigned int* id) {
  return createSdoRequestEx(slave, index, subindex, type, 1, timeout, read, id);
}

bool CEthercatMaster::createSdoRequestEx(unsigned int slave, unsigned short index, unsigned char subindex,
                                         ETHERCAT_DATA_TYPE type, unsigned int count, int timeout, bool read,
                                         unsigned int* id) {
  return createRawSdoRequest(slave, index, subindex, type, CSdoArming::sdoSizeOf(type, count), timeout, read,
                             id);
}

bool CEthercatMaster::createRawSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                                          ETHERCAT_DATA_TYPE type, unsigned long size, int timeout, bool read,
                                          unsigned int* id) {
  return createSdo({slave, index, subindex, false}, {type, size, timeout}, read, id);
}

bool CEthercatMaster::createRawSdoRequestComplete(unsigned int slave, unsigned short index,
                                                  ETHERCAT_DATA_TYPE type, unsigned long size, int timeout,
                                                  bool read, unsigned int* id) {
  return createSdo({slave, index, 0, true}, {type, size, timeout}, read, id);
}

bool CEthercatMaster::createSdo(const _SDO_INFO_KEY& key, const CSdoRequests::_FORM& form, bool read,
                                unsigned int* id) {
  if (m_reservation.master() == nullptr || key.slave > MAX_SLAVE || !CSdoRequests::checkSdoSize(key, form) ||
      id == nullptr || key.slave >= m_vecSlaves.size()) {
    return false;
  }
  return m_sdoRequests.create(key, m_vecSlaves[key.slave]->getSlaveCore(), form, read, id);
}

void CEthercatMaster::destroySdoRequest(unsigned int id, bool read) {
  if (m_reservation.master() != nullptr) {
    m_sdoRequests.destroy(id, read);
  }
}

// Null when there is none. Whatever becomes of the transfer, it is not done yet.
_SDO_INFO_OBJECT* CEthercatMaster::sdoToArm(unsigned int id, bool* done) {
  if (done != nullptr) {
    *done = false;
  }
  return isScanned() ? m_sdoRequests.find(id) : nullptr;
}

bool CEthercatMaster::readSdo(unsigned int id, double* value, bool* done) {
  return readSdoEx(id, value, 1, done);
}

bool CEthercatMaster::readSdoEx(unsigned int id, double* values, unsigned int count, bool* done) {
  return m_sdoService.wake(CSdoArming::readValues(sdoToArm(id, done), values, count, done));
}

bool CEthercatMaster::rawSdoRecv(unsigned int id, void* data, unsigned int size, bool* done) {
  return m_sdoService.wake(CSdoArming::readBytes(sdoToArm(id, done), data, size, done));
}

bool CEthercatMaster::writeSdo(unsigned int id, double value, bool* done) {
  return writeSdoEx(id, &value, 1, done);
}

bool CEthercatMaster::writeSdoEx(unsigned int id, const double* values, unsigned int count, bool* done) {
  return m_sdoService.wake(CSdoArming::writeValues(sdoToArm(id, done), values, count, done));
}

bool CEthercatMaster::rawSdoSend(unsigned int id, const void* data, unsigned int size, bool* done) {
  return m_sdoService.wake(CSdoArming::writeBytes(sdoToArm(id, done), data, size, done));
}

bool CEthercatMaster::processSdoImmediately(unsigned int id) {
  return m_sdoRequests.find(id) != nullptr && m_sdoService.force(id);
}
