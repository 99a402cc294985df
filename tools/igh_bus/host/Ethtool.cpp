#include "host/Ethtool.h"

#include <cstdint>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace igh_bus {
namespace {

// Every record begins with its command.
template <typename Record>
bool ask(int socket, const std::string& card, std::uint32_t command, Record& record) {
  ifreq request{};
  card.copy(request.ifr_name, sizeof request.ifr_name - 1);
  record.cmd = command;
  request.ifr_data = reinterpret_cast<char*>(&record);
  return ioctl(socket, SIOCETHTOOL, &request) == 0;
}

const char* onOff(std::uint32_t value) {
  return value != 0 ? "on" : "off";
}

} // namespace

std::map<std::string, std::string> ethtoolSettings(const std::string& card) {
  std::map<std::string, std::string> settings;
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0)
    return settings;
  ethtool_coalesce coalescing{};
  if (ask(socket, card, ETHTOOL_GCOALESCE, coalescing)) {
    settings["Adaptive RX"] = onOff(coalescing.use_adaptive_rx_coalesce);
    settings["rx-usecs"] = std::to_string(coalescing.rx_coalesce_usecs);
    settings["tx-usecs"] = std::to_string(coalescing.tx_coalesce_usecs);
  }
  static constexpr std::pair<const char*, std::uint32_t> OFFLOADS[] = {
      {"generic-receive-offload", ETHTOOL_GGRO},
      {"generic-segmentation-offload", ETHTOOL_GGSO},
      {"tcp-segmentation-offload", ETHTOOL_GTSO}};
  for (const auto& [name, command] : OFFLOADS) {
    ethtool_value value{};
    if (ask(socket, card, command, value))
      settings[name] = onOff(value.data);
  }
  ethtool_value flags{};
  if (ask(socket, card, ETHTOOL_GFLAGS, flags))
    settings["large-receive-offload"] = onOff(flags.data & ETH_FLAG_LRO);
  close(socket);
  return settings;
}

} // namespace igh_bus
