#include "EthercatObject/Sdo/SdoInfo.h"

#include "EthercatDataHelper/EthercatDataHelper.h"

#include <algorithm>
#include <tuple>
#include <utility>

int _SDO_INFO_KEY::compare(const _SDO_INFO_KEY& a, const _SDO_INFO_KEY& b) {
  const auto order = [](const _SDO_INFO_KEY& key) {
    return std::make_tuple(key.slave, key.index, key.subindex, !key.complete);
  };
  return order(a) == order(b) ? 0 : (order(a) < order(b) ? -1 : 1);
}

void _SDO_INFO_OBJECT::withdraw(bool read) {
  (read ? readPending : writePending) = false;
  (read ? readDone : writeDone) = nullptr;
  if (read) {
    readDestination = nullptr;
  }
  if (inProgressIsRead == read) {
    inProgress = false;
  }
}

void _SDO_INFO_OBJECT::finish(bool read) {
  bool* const done = std::exchange(read ? readDone : writeDone, nullptr);
  inProgress = false;
  (read ? readPending : writePending) = false;
  if (done != nullptr) { // last: who sees it may arm again at once
    __atomic_store_n(done, true, __ATOMIC_RELEASE);
  }
}

bool _SDO_INFO_OBJECT::exportSdoData() {
  const unsigned char* const data = ecrt_sdo_request_data(request);
  void* const destination = readDestination;
  readDestination = nullptr;
  if (destination == nullptr || data == nullptr) {
    return false;
  }
  const unsigned long answered = std::min<unsigned long>(ecrt_sdo_request_data_size(request), size);
  if (dataType == DATA_TYPE_RAW && destinationType == DATA_TYPE_RAW) {
    auto* const bytes = static_cast<unsigned char*>(destination);
    std::fill(std::copy_n(data, answered, bytes), bytes + size, static_cast<unsigned char>(0));
  } else if (destinationType == DATA_TYPE_LREAL) {
    auto* const values = static_cast<unsigned char*>(destination);
    const unsigned long width = CEthercatDataHelper::getTypeSize(dataType);
    for (unsigned long i = 0; i < size / width; ++i) {
      unsigned char element[sizeof(double)] = {}; // as wide as the widest type
      const unsigned long start = std::min(i * width, answered);
      std::copy_n(data + start, std::min(width, answered - start), element);
      double value = 0.0;
      CEthercatDataHelper::doubleFromBuffer(dataType, element, false, &value, 0);
      CEthercatDataHelper::doubleToBuffer(value, DATA_TYPE_LREAL, false, values, i);
    }
  }
  return true;
}

void _SDO_INFO_OBJECT::issue(bool read) {
  if (read) {
    static_cast<void>(ecrt_sdo_request_read(request));
  } else {
    unsigned char* const data = inProgress ? nullptr : ecrt_sdo_request_data(request);
    if (data != nullptr) {
      std::copy(writeBuffer.begin(), writeBuffer.end(), data);
    }
    static_cast<void>(ecrt_sdo_request_write(request));
  }
}
