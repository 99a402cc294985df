#ifndef ETHERCATOBJECT_SDO_SDOARMING_H
#define ETHERCATOBJECT_SDO_SDOARMING_H

#include "EthercatObject/Sdo/SdoInfo.h"

// Arms one transfer on a request, for the service to carry out; *done tells the end. False, perhaps with a
// line on standard output, for a request (null: none) that was not made in this direction, has another size
// or has such a transfer already. Sizes in bytes.
class CSdoArming {
public:
  // Bytes of so many elements; 0, which fits no request, when the product does not fit 32 bits.
  static unsigned int sdoSizeOf(ETHERCAT_DATA_TYPE type, unsigned int count);

  static bool readValues(_SDO_INFO_OBJECT* object, double* values, unsigned int count, bool* done);
  static bool readBytes(_SDO_INFO_OBJECT* object, void* data, unsigned int size, bool* done);
  static bool writeValues(_SDO_INFO_OBJECT* object, const double* values, unsigned int count, bool* done);
  static bool writeBytes(_SDO_INFO_OBJECT* object, const void* data, unsigned int size, bool* done);

private:
  static bool hasDirection(const _SDO_INFO_OBJECT* object, bool read, const void* data);
  static bool isArmableWith(const _SDO_INFO_OBJECT& object, bool read, unsigned long size);
};

#endif
