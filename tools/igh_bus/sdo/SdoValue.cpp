#include "sdo/SdoValue.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace igh_bus {
namespace {

using Kind = SdoType::Kind;

constexpr SdoType TYPES[] = {
    {"BOOL", Kind::truth, 1},
    {"SINT", Kind::integer, 1, DATA_TYPE_SINT},
    {"USINT", Kind::natural, 1, DATA_TYPE_USINT},
    {"INT", Kind::integer, 2, DATA_TYPE_INT},
    {"UINT", Kind::natural, 2, DATA_TYPE_UINT},
    {"DINT", Kind::integer, 4, DATA_TYPE_DINT},
    {"UDINT", Kind::natural, 4, DATA_TYPE_UDINT},
    {"LINT", Kind::integer, 8},
    {"ULINT", Kind::natural, 8},
    {"REAL", Kind::real, 4, DATA_TYPE_REAL},
    {"LREAL", Kind::real, 8, DATA_TYPE_LREAL},
    {"STRING", Kind::text, 0},
};

constexpr std::uint32_t WIDEST = 8; // bytes

[[noreturn]] void refuse(const std::string& text) {
  throw Failure(usageError, text);
}

bool isHex(char digit) {
  return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
}

std::uint64_t mask(std::uint32_t size) {
  return size == WIDEST ? UINT64_MAX : (std::uint64_t{1} << size * 8) - 1;
}

std::uint64_t bitsOf(const SdoType& type, double value) {
  std::uint64_t bits = 0;
  if (type.kind == Kind::real && type.size < WIDEST) {
    const auto single = static_cast<float>(value);
    std::memcpy(&bits, &single, sizeof single);
  } else if (type.kind == Kind::real) {
    std::memcpy(&bits, &value, sizeof value);
  } else {
    bits = value < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value))
                     : static_cast<std::uint64_t>(value);
  }
  return bits & mask(type.size);
}

std::int64_t signedNumber(std::uint64_t bits, std::uint32_t size) {
  if (size == 0)
    return 0;
  const auto unused = (WIDEST - size) * 8;
  return static_cast<std::int64_t>(bits << unused) >> unused;
}

double numberOf(const SdoType& type, std::uint64_t bits) {
  double value = 0;
  if (type.kind == Kind::real && type.size == WIDEST) {
    std::memcpy(&value, &bits, sizeof value);
  } else if (type.kind == Kind::real) {
    float single = 0;
    std::memcpy(&single, &bits, sizeof single);
    value = static_cast<double>(single);
  } else {
    value = type.kind == Kind::integer ? static_cast<double>(signedNumber(bits, type.size))
                                       : static_cast<double>(bits);
  }
  return value;
}

// In the order of the bus: the lowest byte first.
void append(Bytes& bytes, std::uint64_t bits, std::uint32_t size) {
  for (std::uint32_t byte = 0; byte < size; ++byte)
    bytes.push_back(static_cast<std::uint8_t>(bits >> byte * 8));
}

std::uint64_t bitsAt(const Bytes& bytes, std::size_t first, std::size_t size) {
  std::uint64_t bits = 0;
  for (std::size_t byte = 0; byte < size; ++byte)
    bits |= static_cast<std::uint64_t>(bytes[first + byte]) << byte * 8;
  return bits;
}

// A number of digits only, exact in all 64 bits, which a double is not. Nothing for another text, and for one
// that the type does not hold.
std::optional<std::uint64_t> exactBits(const SdoType& type, const std::string& text) {
  const bool negative = text[0] == '-';
  const std::string digits = text.substr(negative ? 1 : 0);
  const bool hexadecimal = digits.rfind("0x", 0) == 0 || digits.rfind("0X", 0) == 0;
  std::uint64_t number = 0;
  const char* const last = digits.data() + digits.size();
  const auto [end, error] =
      std::from_chars(digits.data() + (hexadecimal ? 2 : 0), last, number, hexadecimal ? 16 : 10);
  const std::uint64_t half = std::uint64_t{1} << (type.size * 8 - 1);
  const std::uint64_t highest = negative                     ? (type.kind == Kind::integer ? half : 0)
                                : type.kind == Kind::integer ? half - 1
                                                             : mask(type.size);
  if (error != std::errc() || end != last || number > highest)
    return {};
  return (negative ? 0 - number : number) & mask(type.size);
}

std::uint64_t parseNumber(const SdoType& type, const std::string& text) {
  if (type.whole() && !text.empty()) {
    if (const auto exact = exactBits(type, text))
      return *exact;
  }
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])) != 0 || *end != '\0')
    refuse("value '" + text + "' is not a number");
  checkFits(type, value, text);
  return bitsOf(type, value);
}

std::uint64_t parseTruth(const std::string& text) {
  const bool on = text == "1" || text == "true";
  if (!on && text != "0" && text != "false")
    refuse("value '" + text + "': BOOL holds 0, 1, false and true");
  return on ? 1 : 0;
}

std::string bitsText(const SdoType& type, std::uint64_t bits) {
  const auto digits = static_cast<int>(type.size * 2);
  switch (type.kind) {
  case Kind::truth:
    return format("%s (0x%02" PRIX64 ")", bits != 0 ? "true" : "false", bits);
  case Kind::natural:
    return format("%" PRIu64 " (0x%0*" PRIX64 ")", bits, digits, bits);
  case Kind::integer:
    return format("%" PRId64 " (0x%0*" PRIX64 ")", signedNumber(bits, type.size), digits, bits);
  default:
    return format("%.*g", type.size == WIDEST ? DBL_DECIMAL_DIG : FLT_DECIMAL_DIG, numberOf(type, bits));
  }
}

bool isPrintable(std::uint8_t byte) {
  return byte >= ' ' && byte < 0x7F;
}

// Zeros at the end fill a text up; what else cannot be printed stands as \xNN.
std::string quoted(Bytes bytes) {
  while (!bytes.empty() && bytes.back() == 0)
    bytes.pop_back();
  std::string text = "\"";
  for (const auto byte : bytes)
    text += isPrintable(byte) ? std::string(1, static_cast<char>(byte)) : format("\\x%02X", unsigned{byte});
  return text + '"';
}

// Two letters are a number more often than a word.
bool looksLikeText(const Bytes& bytes) {
  constexpr std::ptrdiff_t SHORTEST = 3;
  const auto end = std::find(bytes.begin(), bytes.end(), 0);
  return end - bytes.begin() >= SHORTEST && std::all_of(bytes.begin(), end, isPrintable) &&
         std::all_of(end, bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

} // namespace

double SdoType::lowest() const {
  return kind == Kind::integer ? -std::ldexp(1, static_cast<int>(size * 8) - 1) : 0;
}

double SdoType::limit() const {
  return std::ldexp(1, static_cast<int>(size * 8) - (kind == Kind::integer ? 1 : 0));
}

const SdoType* findType(const std::string& name) {
  std::string upper = name.substr(0, name.find('('));
  for (auto& letter : upper)
    letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  for (const auto& type : TYPES) {
    if (upper == type.name)
      return &type;
  }
  return nullptr;
}

const SdoType& parseType(const std::string& name) {
  if (const auto* type = findType(name))
    return *type;
  std::string names;
  for (const auto& type : TYPES)
    names += std::string(type.name) + ", ";
  refuse("type '" + name + "': use " + names + "or --raw");
}

Bytes parseValues(const SdoType& type, const std::vector<std::string>& texts) {
  Bytes bytes;
  for (const auto& text : texts) {
    if (type.kind == Kind::text)
      bytes.insert(bytes.end(), text.begin(), text.end());
    else
      append(bytes, type.kind == Kind::truth ? parseTruth(text) : parseNumber(type, text), type.size);
  }
  if (type.kind == Kind::text && texts.size() > 1)
    refuse("a STRING is one word: put it in quotes");
  return bytes;
}

void checkFits(const SdoType& type, double value, const std::string& text) {
  if (!std::isfinite(value))
    refuse("value " + text + " is not a number");
  if (type.whole() && value != std::trunc(value))
    refuse("value " + text + ": " + type.name + " holds whole numbers only");
  if (type.whole() && (value < type.lowest() || value >= type.limit()))
    refuse("value " + text +
           format(": %s holds %.0f to %" PRIu64, type.name, type.lowest(),
                  mask(type.size) >> (type.kind == Kind::integer ? 1 : 0)));
  if (type.kind == Kind::real && type.size < WIDEST && std::fabs(value) > static_cast<double>(FLT_MAX))
    refuse("value " + text + " is too large for REAL");
}

Bytes parseBytes(const std::vector<std::string>& texts) {
  Bytes bytes;
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

std::string valuesText(const SdoType& type, const Bytes& bytes) {
  if (type.kind == Kind::text)
    return quoted(bytes);
  std::string text;
  for (std::size_t first = 0; first + type.size <= bytes.size(); first += type.size)
    text += (text.empty() ? "" : ", ") + bitsText(type, bitsAt(bytes, first, type.size));
  return text;
}

std::string valueText(const SdoType& type, double value) {
  return bitsText(type, bitsOf(type, value));
}

std::string plainText(const Bytes& bytes) {
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (size == 0)
    return "no bytes";
  const bool number = size <= WIDEST && (size & (size - 1)) == 0;
  if (!number)
    return looksLikeText(bytes) ? quoted(bytes) : hexPairs(bytes);
  const auto bits = bitsAt(bytes, 0, size);
  const auto value = signedNumber(bits, size);
  return hexPairs(bytes) + format(" (%" PRIu64, bits) +
         (value < 0 ? format(", signed %" PRId64, value) : "") +
         (looksLikeText(bytes) ? ", " + quoted(bytes) : "") + ")";
}

Bytes encode(const SdoType& type, const std::vector<double>& values) {
  Bytes bytes;
  for (const double value : values)
    append(bytes, bitsOf(type, value), type.size);
  return bytes;
}

std::vector<double> decode(const SdoType& type, const Bytes& bytes) {
  std::vector<double> values;
  for (std::size_t first = 0; first + type.size <= bytes.size(); first += type.size)
    values.push_back(numberOf(type, bitsAt(bytes, first, type.size)));
  return values;
}

} // namespace igh_bus
