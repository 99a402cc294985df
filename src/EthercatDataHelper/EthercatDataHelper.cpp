#include "EthercatDataHelper/EthercatDataHelper.h"

unsigned int CEndianType::getCPUEndianType() {
  static constexpr unsigned int currentCPUEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 0 : 1;
  return currentCPUEndian;
}

unsigned int CEthercatDataHelper::getTypeSize(ETHERCAT_DATA_TYPE type) {
  static constexpr unsigned int sizes[] = {1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
  auto const position = static_cast<unsigned int>(type);
  return position < sizeof(sizes) / sizeof(sizes[0]) ? sizes[position] : 0;
}
