#include "check/Registers.h"
#include "check/Steps.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus::check {
namespace {

constexpr std::uint16_t TYPE = 0x0000;
constexpr std::uint32_t TYPE_BYTES = 4; // type, revision, build

// "0x0300 2, 0x030D 1"
std::string countsText(const std::vector<std::uint8_t>& counts) {
  std::string text;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] != 0)
      text += (text.empty() ? "" : ", ") + format("0x%04zX %u", ERROR_COUNTERS + i, unsigned{counts[i]});
  }
  return text;
}

bool anyOf(const std::vector<std::uint8_t>& bytes) {
  return std::any_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; });
}

// Gives back whether the slave was served; what it holds goes into the details.
bool tryOne(const CheckedBus& bus, const Registers& registers, std::uint16_t slave, Counters& counters,
            Line& line) {
  try {
    const auto type = registers.read(slave, TYPE, TYPE_BYTES);
    const auto before = registers.read(slave, ERROR_COUNTERS, ERROR_COUNTER_BYTES);
    registers.clearErrorCounters(slave);
    counters[slave] = registers.read(slave, ERROR_COUNTERS, ERROR_COUNTER_BYTES);
    const bool good = anyOf(type) && !anyOf(counters[slave]);
    line.details.push_back(bus.name(slave) + ": type " + hexPairs(type) +
                           (anyOf(before) ? ", counted before " + countsText(before) : "") +
                           (anyOf(counters[slave]) ? ", not cleared " + countsText(counters[slave]) : ""));
    return good;
  } catch (const Failure& failure) {
    line.details.emplace_back(failure.what());
    return false;
  }
}

} // namespace

void checkRegisters(const CheckedBus& bus, Counters& counters, Line& line) {
  const Registers registers(bus.options.master);
  std::size_t good = 0;
  for (std::size_t slave = 0; slave < bus.slaves.size(); ++slave)
    good += tryOne(bus, registers, static_cast<std::uint16_t>(slave), counters, line) ? 1 : 0;
  line.judge(good == bus.slaves.size(), format("%zu of %zu slaves", good, bus.slaves.size()));
}

void checkCounters(const CheckedBus& bus, const Counters& before, Line& line) {
  const Registers registers(bus.options.master);
  std::size_t quiet = 0;
  for (const auto& [slave, counts] : before) {
    auto grown = registers.read(slave, ERROR_COUNTERS, ERROR_COUNTER_BYTES);
    std::transform(grown.begin(), grown.end(), counts.begin(), grown.begin(), [](auto now, auto then) {
      return static_cast<std::uint8_t>(now < then ? now : now - then); // smaller: the slave was off
    });
    quiet += anyOf(grown) ? 0 : 1;
    if (anyOf(grown))
      line.details.push_back(bus.name(slave) + ": " + countsText(grown));
  }
  line.judge(quiet == before.size() && quiet != 0,
             format("%zu of %zu slaves counted nothing", quiet, before.size()));
}

} // namespace igh_bus::check
