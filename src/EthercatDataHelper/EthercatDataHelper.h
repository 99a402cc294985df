// EthercatDataHelper.h - between the double of the application and the bytes of an EtherCAT object.
// Stateless, allocates nothing, callable from the cycle.
#ifndef ETHERCATDATAHELPER_ETHERCATDATAHELPER_H
#define ETHERCATDATAHELPER_ETHERCATDATAHELPER_H

#include "igh_master.h"

class CEndianType {
public:
  // 0 for a little-endian CPU.
  static unsigned int getCPUEndianType();
};

class CEthercatDataHelper {
public:
  // Bytes of one element; 0 for a type that does not exist.
  static unsigned int getTypeSize(ETHERCAT_DATA_TYPE type);

  // The convertible type with exactly this name in a description ("UINT"); DATA_TYPE_INVALID for any other,
  // among them all bit types.
  static ETHERCAT_DATA_TYPE getTypeByName(const char* name);

  // Writes `value` as element `index` of an array of `type` at `buffer`, which needs no alignment. Integers
  // round halves away from zero and wrap to the width of the type; what does not fit 32 bits (64 for UDINT)
  // and NaN store the processor's "integer indefinite", cut to the width. bigEndian: the buffer is
  // big-endian, else it is in the CPU's order. False, and nothing written, for a type without conversion.
  static bool doubleToBuffer(double value, ETHERCAT_DATA_TYPE type, bool bigEndian, void* buffer,
                             unsigned long index);

  // Reads element `index` of an array of `type` at `buffer`. False, and nothing written, for a type without
  // conversion.
  static bool doubleFromBuffer(ETHERCAT_DATA_TYPE type, const void* buffer, bool bigEndian, double* value,
                               unsigned long index);
};

#include "EthercatDataHelper/Conversion.h"

#endif
