#include "arguments/Arguments.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace igh_bus {
namespace {

constexpr double SHORTEST_PERIOD_NS = 100000;
constexpr double LONGEST_PERIOD_NS = 4000000000.0;

[[noreturn]] void refuse(const std::string& text) {
  throw Failure(usageError, text);
}

} // namespace

double parseTime(const std::string& option, const std::string& text) {
  static constexpr std::pair<std::string_view, double> UNITS[] = {
      {"", 1}, {"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  for (const auto& [name, factor] : UNITS) {
    if (name == end && end != text.c_str() && std::isfinite(number) && number >= 0)
      return std::round(number * factor);
  }
  refuse(option + " " + text + ": use a number with ns, us, ms or s, such as 1ms");
}

std::uint32_t parsePeriod(const std::string& text) {
  const double ns = parseTime("--period", text);
  if (ns < SHORTEST_PERIOD_NS || ns > LONGEST_PERIOD_NS)
    refuse("--period " + text + ": the period must lie between 100us and 4s");
  return static_cast<std::uint32_t>(ns);
}

EntryAddress parseWatch(const std::string& text) {
  EntryAddress address;
  const auto colon = text.find(':');
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), address.slave);
  if (colon == std::string::npos || error != std::errc() || end != text.data() + colon)
    refuse("'" + text + "': use SLAVE:ENTRY, such as '5:Statusword', with the slave's number in scan order");
  address.entry = text.substr(colon + 1);
  return address;
}

Setting parseSetting(const std::string& text) {
  const auto equals = text.rfind('=');
  if (equals == std::string::npos)
    refuse("--set '" + text + "': use SLAVE:ENTRY=VALUE, such as '5:Controlword=15'");
  const std::string value = text.substr(equals + 1);
  char* end = nullptr;
  Setting setting{parseWatch(text.substr(0, equals)), std::strtod(value.c_str(), &end)};
  if (value.empty() || *end != '\0')
    refuse("--set '" + text + "': '" + value + "' is not a number");
  return setting;
}

std::uint32_t parseNumber(const std::string& text, std::uint32_t highest, const std::string& what) {
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  std::uint32_t number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] =
      std::from_chars(text.data() + (hexadecimal ? 2 : 0), last, number, hexadecimal ? 16 : 10);
  if (error == std::errc::result_out_of_range || (error == std::errc() && end == last && number > highest))
    refuse(what + " " + text + ": the highest is " +
           (hexadecimal ? format("0x%X", highest) : std::to_string(highest)));
  if (error != std::errc() || end != last)
    refuse(what + " '" + text + "': use a decimal or hexadecimal number, such as 0x0300");
  return number;
}

} // namespace igh_bus
