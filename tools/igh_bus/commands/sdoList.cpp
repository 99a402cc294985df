// igh_bus sdo list: the objects of a slave.
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "commands/commands.h"
#include "descriptions/Descriptions.h"
#include "sdo/ObjectList.h"
#include "sdo/SdoAborts.h"
#include "text/Text.h"

#include <cstdio>
#include <unistd.h>

namespace igh_bus {
namespace {

struct ListOptions : ScanOptions {
  std::uint32_t slave = 0;
  std::vector<std::string> ranges;
};

struct Range {
  std::uint16_t first;
  std::uint16_t last;
};

Range parseRange(const std::string& text) {
  const auto dash = text.find('-');
  const auto first = parseNumber(text.substr(0, dash), 0xFFFF, "index");
  const auto last = dash == std::string::npos ? first : parseNumber(text.substr(dash + 1), 0xFFFF, "index");
  if (last < first)
    throw Failure(usageError, "'" + text + "': the first index is above the last");
  return {static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(last)};
}

// On a terminal the object that is asked for, each over the one before; nothing elsewhere.
class AskedLine {
public:
  AskedLine() = default;
  ~AskedLine() { clear(); }
  AskedLine(const AskedLine&) = delete;
  AskedLine& operator=(const AskedLine&) = delete;
  void show(std::uint16_t index) const {
    if (m_terminal)
      std::printf("\r0x%04X", unsigned{index});
    std::fflush(stdout);
  }
  void clear() const {
    if (m_terminal)
      std::printf("\r\033[K");
  }

private:
  bool m_terminal = isatty(STDOUT_FILENO) != 0;
};

void printObject(const KnownObjects& known, const SdoTransfer& place, const SdoAnswer& answer) {
  const auto name = known.name(place.index, place.subindex);
  if (answer.result < 0)
    std::printf("%s  %4s  %s", place.object().c_str(), "-", abortText(answer.abortCode));
  else
    std::printf("%s  %4zu  %s", place.object().c_str(), answer.bytes.size(),
                known.text(place.index, place.subindex, answer.bytes).c_str());
  std::printf("%s%s\n", name.empty() ? "" : "  ", name.c_str());
}

Status list(const ListOptions& options) {
  std::vector<Range> ranges;
  for (const auto& text : options.ranges)
    ranges.push_back(parseRange(text));
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const OpenedMaster master(options.master);
  const auto slaves = master.slaves(devices);
  checkSlave(options.slave, slaves);
  const auto& slave = slaves[options.slave];
  const KnownObjects known(slave.device);
  const AskedLine asked;
  std::size_t count = 0;
  const auto print = [&](const SdoTransfer& place, const SdoAnswer& answer) {
    asked.clear();
    printObject(known, place, answer);
    ++count;
  };
  ObjectList objects(master, slave.info.position, known, [&](std::uint16_t index) { asked.show(index); });
  for (const auto& [first, last] : ranges)
    objects.visitRange(first, last, print);
  if (ranges.empty())
    objects.visitUsual(slave, print);
  asked.clear();
  std::printf("%zu found in %s, asked for one by one: the IgH master hands out no list\n", count,
              ranges.empty() ? "the usual places" : "these places");
  return success;
}

} // namespace

void addSdoListCommand(CLI::App& sdo, Action& action) {
  auto* command =
      addCommand(sdo, "list",
                 "Show the objects that the slave answers for: index, bytes, value, name. They are "
                 "asked for one by one, as the IgH master hands out no list: those of "
                 "communication, of the description's dictionary, of the PDOs, of a drive's "
                 "profile, or those that are given");
  const auto options = std::make_shared<ListOptions>();
  command->add_option("SLAVE", options->slave, "The slave's number in scan order")
      ->check(wholeNumber(0, UINT16_MAX))
      ->required();
  command->add_option("INDEX[-LAST]", options->ranges, "Look here instead, such as 0x2000-0x20FF");
  addBusOptions(*command, *options, false);
  command->callback([options, &action] { action = [options] { return list(*options); }; });
}

} // namespace igh_bus
