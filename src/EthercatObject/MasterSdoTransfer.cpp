// Arming SDO transfers. The exchange carries them out.
#include "EthercatObject/CEthercatMaster.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <cstdio>
#include <cstring>

namespace {

void clearDone(bool* done) {
  if (done != nullptr) {
    *done = false;
  }
}

} // namespace

// The object on which a transfer may be armed in this direction; null, perhaps with a text, if none may.
_SDO_INFO_OBJECT* CEthercatMaster::armable(unsigned int id, bool read, const void* data) {
  if (!isScanned() || data == nullptr) {
    return nullptr;
  }
  _SDO_INFO_OBJECT* const object = m_sdoHandles.find(id);
  if (object != nullptr && (object->users.flags & (read ? HANDLE_READABLE : HANDLE_WRITABLE)) == 0) {
    std::fputs(read ? "SDO don't create with readable flag\n" : "SDO don't create with writable flag\n",
               stdout);
    return nullptr;
  }
  return object;
}

// The checks that follow: the size in bytes (0 fits none), which must also be what the platform would write,
// and a transfer that is pending already.
bool CEthercatMaster::isArmableWith(const _SDO_INFO_OBJECT& object, bool read, unsigned long size) {
  if (object.size != size || (!read && object.isWriteCut())) {
    std::fputs("SDO do not match field size\n", stdout);
    return false;
  }
  return read ? !object.readPending : !object.writePending;
}

void CEthercatMaster::armRead(_SDO_INFO_OBJECT& object, ETHERCAT_DATA_TYPE destinationType, void* destination,
                              bool* done) {
  object.destinationType = destinationType;
  object.readDestination = destination;
  object.readDone = done;
  object.readPending = true;
  m_sdoCursor.wake();
}

void CEthercatMaster::armWrite(_SDO_INFO_OBJECT& object, bool* done) {
  object.writeDone = done;
  object.writePending = true;
  m_sdoCursor.wake();
}

bool CEthercatMaster::readSdo(unsigned int id, double* value, bool* done) {
  return readSdoEx(id, value, 1, done);
}

bool CEthercatMaster::readSdoEx(unsigned int id, double* values, unsigned int count, bool* done) {
  clearDone(done);
  _SDO_INFO_OBJECT* const object = armable(id, true, values);
  if (object == nullptr || !isArmableWith(*object, true, sdoSizeOf(object->dataType, count))) {
    return false;
  }
  armRead(*object, DATA_TYPE_LREAL, values, done);
  return true;
}

bool CEthercatMaster::rawSdoRecv(unsigned int id, void* data, unsigned int size, bool* done) {
  clearDone(done);
  _SDO_INFO_OBJECT* const object = armable(id, true, data);
  if (object == nullptr || !isArmableWith(*object, true, size)) {
    return false;
  }
  armRead(*object, DATA_TYPE_RAW, data, done);
  return true;
}

bool CEthercatMaster::writeSdo(unsigned int id, double value, bool* done) {
  return writeSdoEx(id, &value, 1, done);
}

bool CEthercatMaster::writeSdoEx(unsigned int id, const double* values, unsigned int count, bool* done) {
  clearDone(done);
  _SDO_INFO_OBJECT* const object = armable(id, false, values);
  if (object == nullptr || !isArmableWith(*object, false, sdoSizeOf(object->dataType, count))) {
    return false;
  }
  for (unsigned int i = 0; i < count; ++i) {
    if (!CEthercatDataHelper::doubleToBuffer(values[i], object->dataType, false, object->writeBuffer.data(),
                                             i)) {
      return false;
    }
  }
  armWrite(*object, done);
  return true;
}

bool CEthercatMaster::rawSdoSend(unsigned int id, const void* data, unsigned int size, bool* done) {
  clearDone(done);
  _SDO_INFO_OBJECT* const object = armable(id, false, data);
  if (object == nullptr || !isArmableWith(*object, false, size)) {
    return false;
  }
  std::memcpy(object->writeBuffer.data(), data, size);
  armWrite(*object, done);
  return true;
}

bool CEthercatMaster::processSdoImmediately(unsigned int id) {
  return id < m_sdoHandles.objects().size() && m_sdoCursor.force(id);
}
