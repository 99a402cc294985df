// Conversion.h - the bodies of EthercatDataHelper.h, inline: with a buffer in the CPU's order and index 0, as
// the handles use them, a value takes its way in a few instructions and without a call.
#ifndef ETHERCATDATAHELPER_CONVERSION_H
#define ETHERCATDATAHELPER_CONVERSION_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

class CDataConversion {
public:
  // round(), halves away from zero, then the conversion that the processor makes: INT64_MIN for NaN and for
  // what does not fit.
  static std::int64_t roundToInt64(double value) {
    const double moved = moveAwayFromZero(value);
    return moved >= -0x1p63 && moved < 0x1p63 ? static_cast<std::int64_t>(moved)
                                              : std::numeric_limits<std::int64_t>::min();
  }
  // The same through 32 bits: INT32_MIN for NaN and for what does not fit.
  static std::int32_t roundToInt32(double value) {
    const double moved = moveAwayFromZero(value);
    return moved > -0x1p31 - 1 && moved < 0x1p31 ? static_cast<std::int32_t>(moved)
                                                 : std::numeric_limits<std::int32_t>::min();
  }

  template <typename T> static bool store(T value, bool bigEndian, void* buffer, unsigned long index) {
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    orderBytes<T>(bytes, bigEndian);
    std::memcpy(static_cast<unsigned char*>(buffer) + index * sizeof(T), bytes, sizeof(T));
    return true;
  }
  template <typename T>
  static bool load(const void* buffer, bool bigEndian, double* value, unsigned long index) {
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, static_cast<const unsigned char*>(buffer) + index * sizeof(T), sizeof(T));
    orderBytes<T>(bytes, bigEndian);
    T element;
    std::memcpy(&element, bytes, sizeof(T));
    *value = static_cast<double>(element);
    return true;
  }

private:
  // What is left when the fraction is cut off is the rounded value. Not by a whole half: the double below a
  // half would be rounded up to 1 by the addition.
  static double moveAwayFromZero(double value) { return value + std::copysign(0x1.fffffffffffffp-2, value); }
  // Reverses the bytes when the buffer's order is not the CPU's.
  template <typename T> static void orderBytes(unsigned char (&bytes)[sizeof(T)], bool bigEndian) {
    if (!bigEndian || CEndianType::getCPUEndianType() != 0) {
      return;
    }
    for (unsigned long low = 0, high = sizeof(T) - 1; low < high; ++low, --high) {
      const unsigned char byte = bytes[low];
      bytes[low] = bytes[high];
      bytes[high] = byte;
    }
  }
};

inline bool CEthercatDataHelper::doubleToBuffer(double value, ETHERCAT_DATA_TYPE type, bool bigEndian,
                                                void* buffer, unsigned long index) {
  static_assert(std::numeric_limits<float>::is_iec559, "a double too large for a float must become infinite");
  switch (static_cast<int>(type)) {
  case DATA_TYPE_SINT:
  case DATA_TYPE_USINT:
    return CDataConversion::store(static_cast<std::uint8_t>(CDataConversion::roundToInt32(value)), bigEndian,
                                  buffer, index);
  case DATA_TYPE_INT:
  case DATA_TYPE_UINT:
    return CDataConversion::store(static_cast<std::uint16_t>(CDataConversion::roundToInt32(value)), bigEndian,
                                  buffer, index);
  case DATA_TYPE_DINT:
    return CDataConversion::store(CDataConversion::roundToInt32(value), bigEndian, buffer, index);
  case DATA_TYPE_UDINT:
    return CDataConversion::store(static_cast<std::uint32_t>(CDataConversion::roundToInt64(value)), bigEndian,
                                  buffer, index);
  case DATA_TYPE_REAL:
    return CDataConversion::store(static_cast<float>(value), bigEndian, buffer, index);
  case DATA_TYPE_LREAL:
    return CDataConversion::store(value, bigEndian, buffer, index);
  default:
    return false;
  }
}

inline bool CEthercatDataHelper::doubleFromBuffer(ETHERCAT_DATA_TYPE type, const void* buffer, bool bigEndian,
                                                  double* value, unsigned long index) {
  switch (static_cast<int>(type)) {
  case DATA_TYPE_SINT:
    return CDataConversion::load<std::int8_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_USINT:
    return CDataConversion::load<std::uint8_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_INT:
    return CDataConversion::load<std::int16_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_UINT:
    return CDataConversion::load<std::uint16_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_DINT:
    return CDataConversion::load<std::int32_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_UDINT:
    return CDataConversion::load<std::uint32_t>(buffer, bigEndian, value, index);
  case DATA_TYPE_REAL:
    return CDataConversion::load<float>(buffer, bigEndian, value, index);
  case DATA_TYPE_LREAL:
    return CDataConversion::load<double>(buffer, bigEndian, value, index);
  default:
    return false;
  }
}

#endif
