#include "EthercatDataHelper/EthercatDataHelper.h"

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

/* round(), halves away from zero, then the conversion that the processor makes: INT64_MIN for NaN and for
 * what does not fit. From 2^52 on a double has no fraction, so the correction below cannot overflow. */
std::int64_t roundToInt64(double value) {
  if (!(value >= -0x1p63 && value < 0x1p63)) {
    return std::numeric_limits<std::int64_t>::min();
  }
  auto const whole = static_cast<std::int64_t>(value);
  double const rest = value - static_cast<double>(whole);
  return whole + static_cast<int>(rest >= 0.5) - static_cast<int>(rest <= -0.5);
}

/* The same through 32 bits: INT32_MIN for NaN and for what does not fit. */
std::int32_t roundToInt32(double value) {
  std::int64_t const rounded = roundToInt64(value);
  bool const fits = rounded >= std::numeric_limits<std::int32_t>::min() &&
                    rounded <= std::numeric_limits<std::int32_t>::max();
  return fits ? static_cast<std::int32_t>(rounded) : std::numeric_limits<std::int32_t>::min();
}

/* Reverses the bytes when the buffer's order is not the CPU's. */
template <typename T> void orderBytes(unsigned char (&bytes)[sizeof(T)], bool bigEndian) {
  if (!bigEndian || CEndianType::getCPUEndianType() != 0) {
    return;
  }
  for (unsigned long low = 0, high = sizeof(T) - 1; low < high; ++low, --high) {
    unsigned char const byte = bytes[low];
    bytes[low] = bytes[high];
    bytes[high] = byte;
  }
}

template <typename T> bool store(T value, bool bigEndian, void* buffer, unsigned long index) {
  unsigned char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  orderBytes<T>(bytes, bigEndian);
  std::memcpy(static_cast<unsigned char*>(buffer) + index * sizeof(T), bytes, sizeof(T));
  return true;
}

template <typename T> bool load(void const* buffer, bool bigEndian, double* value, unsigned long index) {
  unsigned char bytes[sizeof(T)];
  std::memcpy(bytes, static_cast<unsigned char const*>(buffer) + index * sizeof(T), sizeof(T));
  orderBytes<T>(bytes, bigEndian);
  T element;
  std::memcpy(&element, bytes, sizeof(T));
  *value = static_cast<double>(element);
  return true;
}

} // namespace

unsigned int CEndianType::getCPUEndianType() {
  static constexpr unsigned int currentCPUEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 0 : 1;
  return currentCPUEndian;
}

unsigned int CEthercatDataHelper::getTypeSize(ETHERCAT_DATA_TYPE type) {
  static constexpr unsigned int sizes[] = {1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
  auto const position = static_cast<unsigned int>(type);
  return position < sizeof(sizes) / sizeof(sizes[0]) ? sizes[position] : 0;
}

bool CEthercatDataHelper::doubleToBuffer(double value, ETHERCAT_DATA_TYPE type, bool bigEndian, void* buffer,
                                         unsigned long index) {
  static_assert(std::numeric_limits<float>::is_iec559, "a double too large for a float must become infinite");
  switch (static_cast<int>(type)) {
  case DATA_TYPE_SINT:
  case DATA_TYPE_USINT:
    return store(static_cast<std::uint8_t>(roundToInt32(value)), bigEndian, buffer, index);
  case DATA_TYPE_INT:
  case DATA_TYPE_UINT:
    return store(static_cast<std::uint16_t>(roundToInt32(value)), bigEndian, buffer, index);
  case DATA_TYPE_DINT:
    return store(roundToInt32(value), bigEndian, buffer, index);
  case DATA_TYPE_UDINT:
    return store(static_cast<std::uint32_t>(roundToInt64(value)), bigEndian, buffer, index);
  case DATA_TYPE_REAL:
    return store(static_cast<float>(value), bigEndian, buffer, index);
  case DATA_TYPE_LREAL:
    return store(value, bigEndian, buffer, index);
  default:
    return false;
  }
}

bool CEthercatDataHelper::doubleFromBuffer(ETHERCAT_DATA_TYPE type, void const* buffer, bool bigEndian,
                                           double* value, unsigned long index) {
  switch (static_cast<int>(type)) {
  case DATA_TYPE_SINT:
    return load<std::int8_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_USINT:
    return load<std::uint8_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_INT:
    return load<std::int16_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_UINT:
    return load<std::uint16_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_DINT:
    return load<std::int32_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_UDINT:
    return load<std::uint32_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_REAL:
    return load<float>(buffer, bigEndian, value, index);
  case DATA_TYPE_LREAL:
    return load<double>(buffer, bigEndian, value, index);
  default:
    return false;
  }
}
