#include "EthercatObject/Sdo/SdoArming.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <cstdio>
#include <cstring>

namespace {

void armRead(_SDO_INFO_OBJECT& object, ETHERCAT_DATA_TYPE destinationType, void* destination, bool* done) {
  object.destinationType = destinationType;
  object.readDestination = destination;
  object.readDone = done;
  object.readPending = true;
}

void armWrite(_SDO_INFO_OBJECT& object, bool* done) {
  object.writeDone = done;
  object.writePending = true;
}

} // namespace

unsigned int CSdoArming::sdoSizeOf(ETHERCAT_DATA_TYPE type, unsigned int count) {
  const unsigned long size = static_cast<unsigned long>(CEthercatDataHelper::getTypeSize(type)) * count;
  return size > 0xFFFFFFFFUL ? 0 : static_cast<unsigned int>(size);
}

bool CSdoArming::hasDirection(const _SDO_INFO_OBJECT* object, bool read, const void* data) {
  if (object == nullptr || data == nullptr) {
    return false;
  }
  if (!object->users.has(read)) {
    std::fputs(read ? "SDO don't create with readable flag\n" : "SDO don't create with writable flag\n",
               stdout);
    return false;
  }
  return true;
}

// The checks that follow: the size (0 fits none), which must also be what the platform would write, and a
// transfer that is pending already.
bool CSdoArming::isArmableWith(const _SDO_INFO_OBJECT& object, bool read, unsigned long size) {
  if (object.size != size || (!read && object.isWriteCut())) {
    std::fputs("SDO do not match field size\n", stdout);
    return false;
  }
  return read ? !object.readPending : !object.writePending;
}

bool CSdoArming::readValues(_SDO_INFO_OBJECT* object, double* values, unsigned int count, bool* done) {
  if (!hasDirection(object, true, values) ||
      !isArmableWith(*object, true, sdoSizeOf(object->dataType, count))) {
    return false;
  }
  armRead(*object, DATA_TYPE_LREAL, values, done);
  return true;
}

bool CSdoArming::readBytes(_SDO_INFO_OBJECT* object, void* data, unsigned int size, bool* done) {
  if (!hasDirection(object, true, data) || !isArmableWith(*object, true, size)) {
    return false;
  }
  armRead(*object, DATA_TYPE_RAW, data, done);
  return true;
}

bool CSdoArming::writeValues(_SDO_INFO_OBJECT* object, const double* values, unsigned int count, bool* done) {
  if (!hasDirection(object, false, values) ||
      !isArmableWith(*object, false, sdoSizeOf(object->dataType, count))) {
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

bool CSdoArming::writeBytes(_SDO_INFO_OBJECT* object, const void* data, unsigned int size, bool* done) {
  if (!hasDirection(object, false, data) || !isArmableWith(*object, false, size)) {
    return false;
  }
  std::memcpy(object->writeBuffer.data(), data, size);
  armWrite(*object, done);
  return true;
}
