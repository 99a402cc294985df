#ifndef ETHERCATOBJECT_SDO_SDOINFO_H
#define ETHERCATOBJECT_SDO_SDOINFO_H

#include "EthercatObject/Base/HandleTable.h"
#include "EthercatObject/Base/KeyOrder.h"

#include <atomic>
#include <ecrt.h>
#include <igh_master.h>
#include <vector>

// Which mailbox object a request transfers.
struct _SDO_INFO_KEY {
  unsigned int slave = 0;
  unsigned short index = 0;
  unsigned char subindex = 0; // 0 for complete access
  bool complete = false;

  // -1, 0 or 1: by slave, index, subindex; complete access stands before the single access of the same place.
  static int compare(const _SDO_INFO_KEY& a, const _SDO_INFO_KEY& b);
};

// A transfer is handed over by setting it and taken back by clearing it, perhaps between two threads: what
// was written before is seen behind.
class CHandOver {
public:
  CHandOver() = default;
  CHandOver(const CHandOver& other) noexcept : m_bSet(other) {}
  CHandOver& operator=(const CHandOver& other) noexcept { return *this = static_cast<bool>(other); }
  CHandOver& operator=(bool set) noexcept {
    m_bSet.store(set, std::memory_order_release);
    return *this;
  }
  operator bool() const noexcept { return m_bSet.load(std::memory_order_acquire); }

private:
  std::atomic<bool> m_bSet{false};
};

// One SDO request and the transfers armed on it, at most one per direction. The platform's request belongs to
// the slave configuration; destination and done flags belong to the application.
struct _SDO_INFO_OBJECT {
  ETHERCAT_DATA_TYPE dataType = DATA_TYPE_INVALID;    // of one element
  ETHERCAT_DATA_TYPE destinationType = DATA_TYPE_RAW; // of the pending read: bytes, or LREAL for doubles
  ec_sdo_request_t* request = nullptr;                // null: the slot is free
  _HANDLE_USERS users;
  CHandOver readPending;
  CHandOver writePending;
  bool inProgress = false; // the platform has been given the pending transfer that the cursor stands on
  bool inProgressIsRead = false;
  bool issued = false; // the platform's request was given a transfer, and is kept in mind for the end
  std::vector<unsigned char> writeBuffer; // `size` bytes once there is a writer
  void* readDestination = nullptr;
  bool* readDone = nullptr;
  bool* writeDone = nullptr;
  unsigned long size = 0; // bytes
  int timeoutMs = 0;

  bool isFree() const { return request == nullptr; }
  void reset() { resetSdoInfo(); }
  void resetSdoInfo() { *this = _SDO_INFO_OBJECT(); }
  unsigned long getSdoBufLen() const { return size; }

  // Counts one more user, unless there is no memory for the write buffer of the first writer.
  void addUser(bool read) {
    if (!read) {
      writeBuffer.resize(size);
    }
    users.add(read);
  }
  bool isArmed(bool read) const { return (read ? readPending : writePending) && users.has(read); }
  // Takes the pending transfer of a direction back; nothing of it reaches the application any more.
  void withdraw(bool read);
  // Ends the pending transfer of a direction: it counts as done.
  void finish(bool read);
  // Hands the finished read to its destination; what lies behind a short answer counts as zero bytes. A raw
  // read of a typed request delivers nothing.
  bool exportSdoData();
  // The platform writes as many bytes as the last answer had: a write would be cut now, and count as done.
  bool isWriteCut() const { return request != nullptr && ecrt_sdo_request_data_size(request) < size; }
  // Starts the read or the write at the platform. A write that is not in progress yet brings its data along:
  // the platform's buffer holds anything until then.
  void issue(bool read);
};

#endif
