// SDO requests: creation, sharing and destruction. What moves them is in MasterSdoTransfer.cpp and
// MasterSdoService.cpp.
#include "EthercatObject/CEthercatMaster.h"
#include "EthercatObject/PlatformRelease.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <cstdio>
#include <utility>

namespace {

constexpr unsigned int INVALID_ID = 0xFFFFFFFFU;
constexpr unsigned int MAX_SLAVE = 254;

} // namespace

bool CEthercatMaster::checkSdoSize(ETHERCAT_DATA_TYPE type, unsigned long size) {
  const unsigned int typeSize = CEthercatDataHelper::getTypeSize(type);
  return size != 0 && typeSize != 0 && size % typeSize == 0;
}

unsigned int CEthercatMaster::sdoSizeOf(ETHERCAT_DATA_TYPE type, unsigned int count) {
  const unsigned long size = static_cast<unsigned long>(CEthercatDataHelper::getTypeSize(type)) * count;
  return size > 0xFFFFFFFFUL ? 0 : static_cast<unsigned int>(size);
}

bool CEthercatMaster::createSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                                       ETHERCAT_DATA_TYPE type, int timeout, bool read, unsigned int* id) {
  return createSdoRequestEx(slave, index, subindex, type, 1, timeout, read, id);
}

bool CEthercatMaster::createSdoRequestEx(unsigned int slave, unsigned short index, unsigned char subindex,
                                         ETHERCAT_DATA_TYPE type, unsigned int count, int timeout, bool read,
                                         unsigned int* id) {
  return createRawSdoRequest(slave, index, subindex, type, sdoSizeOf(type, count), timeout, read, id);
}

bool CEthercatMaster::createRawSdoRequest(unsigned int slave, unsigned short index, unsigned char subindex,
                                          ETHERCAT_DATA_TYPE type, unsigned long size, int timeout, bool read,
                                          unsigned int* id) {
  return createSdo(_SDO_INFO_KEY{slave, index, subindex, false}, type, size, timeout, read, id,
                   "Unexpected Sdo size.\n", "Failed to create SDO request.\n");
}

bool CEthercatMaster::createRawSdoRequestComplete(unsigned int slave, unsigned short index,
                                                  ETHERCAT_DATA_TYPE type, unsigned long size, int timeout,
                                                  bool read, unsigned int* id) {
  return createSdo(_SDO_INFO_KEY{slave, index, 0, true}, type, size, timeout, read, id,
                   "Unexpected sdo size.\n", "Failed to create complete SDO request.\n");
}

bool CEthercatMaster::createSdo(const _SDO_INFO_KEY& key, ETHERCAT_DATA_TYPE type, unsigned long size,
                                int timeout, bool read, unsigned int* id, const char* sizeText,
                                const char* failureText) {
  if (m_reservation.master() == nullptr || key.slave > MAX_SLAVE) {
    return false;
  }
  if (!checkSdoSize(type, size)) {
    std::fputs(sizeText, stderr);
    return false;
  }
  if (id == nullptr || key.slave >= m_vecSlaves.size()) {
    return false;
  }
  if (_SDO_INFO_OBJECT* const shared = m_sdoHandles.findKey(key, *id)) {
    shared->addUser(read);
    return true;
  }
  _SDO_INFO_OBJECT object;
  object.dataType = type;
  object.size = size;
  object.timeoutMs = timeout;
  object.addUser(read);
  // The platform comes last: what it has given stays with the slave configuration.
  auto place = m_sdoHandles.makePlace(key);
  if (!requestSdo(key, object)) {
    *id = INVALID_ID;
    std::fputs(failureText, stderr);
    return false;
  }
  *id = m_sdoHandles.enter(std::move(place), std::move(object));
  return true;
}

// Gets the platform's request for an object; false when it is refused or the slave has no configuration.
bool CEthercatMaster::requestSdo(const _SDO_INFO_KEY& key, _SDO_INFO_OBJECT& object) {
  ec_slave_config_t* const config = m_vecSlaves[key.slave]->getSlaveCore();
  object.request = nullptr;
  object.inProgress = false;
  object.issued = false;
  if (config == nullptr) {
    return false;
  }
  m_issuedSdos.makeRoom();
  object.request = key.complete
                       ? createCompleteSdoRequest(config, key.index, object.size, 0)
                       : ecrt_slave_config_create_sdo_request(config, key.index, key.subindex, object.size);
  if (object.request == nullptr) {
    return false;
  }
  static_cast<void>(ecrt_sdo_request_timeout(object.request, static_cast<uint32_t>(object.timeoutMs)));
  return true;
}

// Deactivation has freed every request. What was armed starts over on the new ones.
void CEthercatMaster::renewSdoRequests() {
  for (size_t id = 0; id < m_sdoHandles.objects().size(); ++id) {
    if (m_sdoHandles.objects()[id].isFree()) {
      continue;
    }
    const _SDO_INFO_KEY& key = m_sdoHandles.keyOf(id);
    if (!requestSdo(key, m_sdoHandles.objects()[id])) {
      m_sdoHandles.objects()[id].resetSdoInfo();
      std::fputs(key.complete ? "Failed to create complete SDO request.\n"
                              : "Failed to create SDO request.\n",
                 stderr);
    }
  }
}

void CEthercatMaster::dropSdoRequests() {
  for (_SDO_INFO_OBJECT& object : m_sdoHandles.objects()) {
    object.resetSdoInfo();
  }
}

void CEthercatMaster::destroySdoRequest(unsigned int id, bool read) {
  if (m_reservation.master() == nullptr) {
    return;
  }
  _SDO_INFO_OBJECT* const object = m_sdoHandles.find(id);
  if (object == nullptr || m_sdoHandles.release(id, read)) {
    return;
  }
  for (const bool direction : {true, false}) {
    if ((object->users.flags & (direction ? HANDLE_READABLE : HANDLE_WRITABLE)) == 0) {
      object->withdraw(direction);
    }
  }
}
