#include "adapt/Numbers.h"

#include "ENIObject/ENIObject.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace igh_bus::adapt {
namespace {

std::string_view trimmed(std::string_view text) {
  static constexpr std::string_view BLANKS = " \t\r\n\v";
  const auto first = text.find_first_not_of(BLANKS);
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

// Takes "#", "x" and "0x" away, as often as they stand there; true when one of them says hexadecimal.
bool takePrefixes(std::string_view& text) {
  bool hexadecimal = false;
  for (;;) {
    if (!text.empty() && text[0] == '#') {
      text.remove_prefix(1);
    } else if (!text.empty() && (text[0] == 'x' || text[0] == 'X')) {
      text.remove_prefix(1);
      hexadecimal = true;
    } else if (text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
      text.remove_prefix(2);
      hexadecimal = true;
    } else {
      return hexadecimal;
    }
  }
}

bool holdsHexDigit(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) && std::isalpha(c); });
}

} // namespace

std::optional<std::uint32_t> plainNumber(const std::string& text) {
  auto digits = trimmed(text);
  const bool negative = !digits.empty() && digits[0] == '-';
  if (!digits.empty() && (digits[0] == '-' || digits[0] == '+'))
    digits.remove_prefix(1);
  const bool hexadecimal = takePrefixes(digits) || holdsHexDigit(digits);
  std::uint64_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, hexadecimal ? 16 : 10);
  // A fraction, as some write times with, is cut.
  const bool whole = end == digits.data() + digits.size() || (!hexadecimal && *end == '.');
  if (error != std::errc() || !whole)
    return std::nullopt;
  return static_cast<std::uint32_t>(negative ? -number : number);
}

std::uint32_t NumberReader::read(const std::string& text, const std::string& where) {
  if (trimmed(text).empty())
    return 0;
  const auto taken = CMasterENIObject::resolveENIValue(text.c_str());
  const auto meant = plainNumber(text);
  if (!meant) {
    m_changes.push_back(
        {"number", where, text, std::to_string(taken), "is no number; the library reads it so"});
    return taken;
  }
  if (*meant != taken)
    m_changes.push_back(
        {"number", where, text, std::to_string(*meant), "the library would read " + std::to_string(taken)});
  return *meant;
}

} // namespace igh_bus::adapt
