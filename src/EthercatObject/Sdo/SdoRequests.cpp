#include "EthercatObject/Sdo/SdoRequests.h"

#include "EthercatDataHelper/EthercatDataHelper.h"
#include "EthercatObject/Base/PlatformRelease.h"

#include <cstdio>
#include <utility>

namespace {

constexpr unsigned int INVALID_ID = 0xFFFFFFFFU;

void printRefusal(const _SDO_INFO_KEY& key) {
  std::fputs(key.complete ? "Failed to create complete SDO request.\n" : "Failed to create SDO request.\n",
             stderr);
}

} // namespace

bool CSdoRequests::checkSdoSize(const _SDO_INFO_KEY& key, const _FORM& form) {
  const unsigned int typeSize = CEthercatDataHelper::getTypeSize(form.type);
  if (form.size != 0 && typeSize != 0 && form.size % typeSize == 0) {
    return true;
  }
  std::fputs(key.complete ? "Unexpected sdo size.\n" : "Unexpected Sdo size.\n", stderr);
  return false;
}

bool CSdoRequests::create(const _SDO_INFO_KEY& key, ec_slave_config_t* config, const _FORM& form, bool read,
                          unsigned int* id) {
  if (_SDO_INFO_OBJECT* const shared = m_handles.findKey(key, *id)) {
    shared->addUser(read);
    return true;
  }
  _SDO_INFO_OBJECT object;
  object.dataType = form.type;
  object.size = form.size;
  object.timeoutMs = form.timeout;
  object.addUser(read);
  // The platform comes last: what it has given stays with the slave configuration.
  auto place = m_handles.makePlace(key);
  if (!request(key, config, object)) {
    *id = INVALID_ID;
    printRefusal(key);
    return false;
  }
  *id = m_handles.enter(std::move(place), std::move(object));
  return true;
}

bool CSdoRequests::request(const _SDO_INFO_KEY& key, ec_slave_config_t* config, _SDO_INFO_OBJECT& object) {
  object.request = nullptr;
  object.inProgress = false;
  object.issued = false;
  if (config == nullptr) {
    return false;
  }
  m_issued.makeRoom();
  object.request = key.complete
                       ? createCompleteSdoRequest(config, key.index, object.size, 0)
                       : ecrt_slave_config_create_sdo_request(config, key.index, key.subindex, object.size);
  if (object.request == nullptr) {
    return false;
  }
  static_cast<void>(ecrt_sdo_request_timeout(object.request, static_cast<uint32_t>(object.timeoutMs)));
  return true;
}

void CSdoRequests::renew(const std::function<ec_slave_config_t*(unsigned int slave)>& configOf) {
  for (size_t id = 0; id < objects().size(); ++id) {
    _SDO_INFO_OBJECT& object = objects()[id];
    if (object.isFree()) {
      continue;
    }
    const _SDO_INFO_KEY& key = m_handles.keyOf(id);
    if (!request(key, configOf(key.slave), object)) {
      object.resetSdoInfo();
      printRefusal(key);
    }
  }
}

void CSdoRequests::drop() {
  for (_SDO_INFO_OBJECT& object : objects()) {
    object.resetSdoInfo();
  }
}

void CSdoRequests::destroy(unsigned int id, bool read) {
  _SDO_INFO_OBJECT* const object = m_handles.find(id);
  if (object == nullptr || m_handles.release(id, read)) {
    return;
  }
  for (const bool direction : {true, false}) {
    if (!object->users.has(direction)) {
      object->withdraw(direction);
    }
  }
}
