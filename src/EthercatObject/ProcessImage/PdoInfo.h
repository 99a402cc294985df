#ifndef ETHERCATOBJECT_PROCESSIMAGE_PDOINFO_H
#define ETHERCATOBJECT_PROCESSIMAGE_PDOINFO_H

#include "EthercatObject/Base/HandleTable.h"
#include "EthercatObject/Base/KeyOrder.h"

#include <ecrt.h>
#include <igh_master.h>
#include <string>

struct _PDO_ENTRY_OFFSET;

// Which entry a handle moves.
struct _PDO_ENTRY_INFO_KEY {
  unsigned int slave = 0;
  std::string name;

  // -1, 0 or 1: by slave, then bytewise by name.
  static int compare(const _PDO_ENTRY_INFO_KEY& a, const _PDO_ENTRY_INFO_KEY& b);
};

struct _PDO_ENTRY_INFO_OBJECT {
  ETHERCAT_DATA_TYPE dataType = DATA_TYPE_INVALID;
  const ec_pdo_entry_reg_t* registration = nullptr; // of the description; null: the slot is free
  _HANDLE_USERS users;
  unsigned int inputPosition = 0;  // in the block of inputs
  unsigned int outputPosition = 0; // in the block of outputs
  unsigned long size = 0;          // bytes, 0 for a type without conversion
  const _PDO_ENTRY_OFFSET* offset = nullptr;

  bool isFree() const { return registration == nullptr; }
  void reset() { resetPdoInfo(); }
  void resetPdoInfo() { *this = _PDO_ENTRY_INFO_OBJECT(); }
  unsigned long getPdoBufLen() const { return size; }
  // Type and size from the type name of a description; false for a name without conversion.
  bool initPdoEntryDataType(const std::string& typeName);
};

#endif
