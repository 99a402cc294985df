#include "EthercatDataHelper/EthercatDataHelper.h"

unsigned int CEndianType::getCPUEndianType() {
  static constexpr unsigned int CURRENT_CPU_ENDIAN = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 0 : 1;
  return CURRENT_CPU_ENDIAN;
}

unsigned int CEthercatDataHelper::getTypeSize(ETHERCAT_DATA_TYPE type) {
  static constexpr unsigned int SIZES[] = {1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
  const auto position = static_cast<unsigned int>(type);
  return position < sizeof(SIZES) / sizeof(SIZES[0]) ? SIZES[position] : 0;
}
