#include "sdo/SdoValue.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <cctype>
#include <cfloat>
#include <cinttypes>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace igh_bus {
namespace {

constexpr SdoType TYPES[] = {
    {"SINT", DATA_TYPE_SINT, 1, INT8_MIN, INT8_MAX},
    {"USINT", DATA_TYPE_USINT, 1, 0, UINT8_MAX},
    {"INT", DATA_TYPE_INT, 2, INT16_MIN, INT16_MAX},
    {"UINT", DATA_TYPE_UINT, 2, 0, UINT16_MAX},
    {"DINT", DATA_TYPE_DINT, 4, INT32_MIN, INT32_MAX},
    {"UDINT", DATA_TYPE_UDINT, 4, 0, UINT32_MAX},
    {"REAL", DATA_TYPE_REAL, 4, 0, 0},
    {"LREAL", DATA_TYPE_LREAL, 8, 0, 0},
};

[[noreturn]] void refuse(const std::string& text) {
  throw Failure(usageError, text);
}

bool isHex(char digit) {
  return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
}

// The low bytes of the number, in the order of the bus, which is that of the machines that this runs on.
std::uint64_t bitsOf(const SdoType& type, double value) {
  std::uint64_t bits = 0;
  if (type.id == DATA_TYPE_REAL) {
    const auto single = static_cast<float>(value);
    std::memcpy(&bits, &single, sizeof single);
  } else if (type.id == DATA_TYPE_LREAL) {
    std::memcpy(&bits, &value, sizeof value);
  } else {
    bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
  }
  return type.size == 8 ? bits : bits & ((std::uint64_t{1} << type.size * 8) - 1);
}

double valueOf(const SdoType& type, std::uint64_t bits) {
  double value = 0;
  if (type.id == DATA_TYPE_LREAL) {
    std::memcpy(&value, &bits, sizeof value);
  } else if (type.id == DATA_TYPE_REAL) {
    float single = 0;
    std::memcpy(&single, &bits, sizeof single);
    value = static_cast<double>(single);
  } else {
    const auto number = static_cast<double>(bits);
    value = number > type.highest ? number - std::ldexp(1, static_cast<int>(type.size * 8)) : number;
  }
  return value;
}

} // namespace

const SdoType& parseType(const std::string& name) {
  std::string upper = name;
  for (auto& letter : upper)
    letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  for (const auto& type : TYPES) {
    if (upper == type.name)
      return type;
  }
  if (upper == "LINT" || upper == "ULINT")
    refuse("type " + upper + ": the library cannot convert it; use --raw, with 8 bytes for each number");
  refuse("type '" + name + "': use SINT, USINT, INT, UINT, DINT, UDINT, REAL or LREAL, or --raw");
}

double parseValue(const SdoType& type, const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])) != 0 || *end != '\0')
    refuse("value '" + text + "' is not a number");
  checkFits(type, value, text);
  return value;
}

void checkFits(const SdoType& type, double value, const std::string& text) {
  if (!std::isfinite(value))
    refuse("value " + text + " is not a number");
  if (type.whole() && value != std::trunc(value))
    refuse("value " + text + ": " + type.name + " holds whole numbers only");
  if (type.whole() && (value < type.lowest || value > type.highest))
    refuse("value " + text + format(": %s holds %.0f to %.0f", type.name, type.lowest, type.highest));
  if (type.id == DATA_TYPE_REAL && std::fabs(value) > static_cast<double>(FLT_MAX))
    refuse("value " + text + " is too large for REAL");
}

std::vector<std::uint8_t> parseBytes(const std::vector<std::string>& texts) {
  std::vector<std::uint8_t> bytes;
  for (const auto& text : texts) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == ' ')
        continue;
      if (i + 1 == text.size() || !isHex(text[i]) || !isHex(text[i + 1]))
        refuse("value '" + text + "': raw bytes are pairs of hexadecimal digits, such as '01 FF'");
      bytes.push_back(static_cast<std::uint8_t>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
      ++i;
    }
  }
  return bytes;
}

std::string valueText(const SdoType& type, double value) {
  if (!type.whole())
    return format("%.*g", type.id == DATA_TYPE_REAL ? FLT_DECIMAL_DIG : DBL_DECIMAL_DIG, value);
  return format("%.0f (0x%0*" PRIX64 ")", value, static_cast<int>(type.size * 2), bitsOf(type, value));
}

std::vector<std::uint8_t> encode(const SdoType& type, const std::vector<double>& values) {
  std::vector<std::uint8_t> bytes;
  for (const double value : values) {
    const auto bits = bitsOf(type, value);
    for (std::uint32_t byte = 0; byte < type.size; ++byte)
      bytes.push_back(static_cast<std::uint8_t>(bits >> byte * 8));
  }
  return bytes;
}

std::vector<double> decode(const SdoType& type, const std::vector<std::uint8_t>& bytes) {
  std::vector<double> values;
  for (std::size_t first = 0; first + type.size <= bytes.size(); first += type.size) {
    std::uint64_t bits = 0;
    for (std::uint32_t byte = 0; byte < type.size; ++byte)
      bits |= static_cast<std::uint64_t>(bytes[first + byte]) << byte * 8;
    values.push_back(valueOf(type, bits));
  }
  return values;
}

} // namespace igh_bus
