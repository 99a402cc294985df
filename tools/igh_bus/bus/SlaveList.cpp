#include "bus/SlaveList.h"

#include "text/Text.h"

#include <algorithm>
#include <cstdio>

namespace igh_bus {
namespace {

using Columns = std::vector<std::string>;

// A slave without alias counts from the last one that has one.
std::vector<std::string> addresses(const std::vector<FoundSlave>& slaves) {
  std::vector<std::string> texts;
  unsigned int alias = 0;
  std::size_t first = 0;
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    if (slaves[i].info.alias != 0) {
      alias = slaves[i].info.alias;
      first = i;
    }
    texts.push_back(format("%u:%zu", alias, i - first));
  }
  return texts;
}

std::string nameOf(const ec_slave_info_t& info) {
  return *info.name ? info.name : format("0x%08x:0x%08x", info.vendor_id, info.product_code);
}

// Padded to the widest of each column, the last one left as it is.
std::vector<std::string> aligned(const std::vector<Columns>& rows) {
  std::vector<std::string> lines(rows.size());
  for (std::size_t column = 0; !rows.empty() && column < rows[0].size(); ++column) {
    std::size_t width = 0;
    for (const auto& row : rows)
      width = std::max(width, row[column].size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      lines[i].resize(column == 0 ? 0 : lines[i].size() + 2, ' ');
      lines[i] += rows[i][column];
      if (column + 1 < rows[i].size())
        lines[i].append(width - rows[i][column].size(), ' ');
    }
  }
  return lines;
}

} // namespace

std::string slaveStateText(std::uint8_t alState) {
  constexpr std::uint8_t BOOT = 3;
  constexpr std::uint8_t ERROR = 0x10;
  const std::uint8_t state = alState & 0xFU;
  return (state == BOOT ? "BOOT" : stateText(state)) + (alState & ERROR ? " + ERROR" : "");
}

std::vector<std::string> slaveLines(const std::vector<FoundSlave>& slaves, bool described) {
  const auto address = addresses(slaves);
  std::vector<Columns> rows;
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    const auto& [info, device] = slaves[i];
    rows.push_back({std::to_string(i), address[i], slaveStateText(info.al_state), info.error_flag ? "E" : "+",
                    nameOf(info)});
    if (described)
      rows.back().push_back(device ? device->typeName : "no description");
  }
  return aligned(rows);
}

void printAliases(const std::vector<FoundSlave>& slaves) {
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    if (slaves[i].info.alias != 0)
      std::printf(
          "slave %zu has alias %u: the real master reads the position beside an alias as an offset behind "
          "it, so this slave stays offline\n",
          i, unsigned{slaves[i].info.alias});
  }
}

void printSlaves(const std::vector<FoundSlave>& slaves) {
  for (const auto& line : slaveLines(slaves, true))
    std::printf("%s\n", line.c_str());
  printAliases(slaves);
}

} // namespace igh_bus
