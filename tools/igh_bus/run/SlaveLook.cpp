#include "run/SlaveLook.h"

#include "bus/SlaveList.h"
#include "scan/AlStatusCodes.h"
#include "text/Text.h"

#include <algorithm>
#include <chrono>
#include <numeric>
#include <thread>

namespace igh_bus {
namespace {

constexpr std::uint16_t DL_STATUS = 0x0110;
constexpr std::uint16_t AL_STATUS = 0x0130;
constexpr std::uint16_t AL_STATUS_CODE = 0x0134;
constexpr std::uint8_t STATE_BITS = 0x0F;
constexpr std::uint8_t ERROR_BIT = 0x10;

void awaitScan(const OpenedMaster& master) {
  using namespace std::chrono_literals;
  for (int left = 300; left > 0 && master.scans(); --left)
    std::this_thread::sleep_for(10ms);
}

} // namespace

bool isBelowOp(const SlaveSight& sight) {
  return (sight.alState & STATE_BITS) < EC_AL_STATE_OP;
}

bool isTroubled(const SlaveSight& sight) {
  return !sight.answers || (sight.alState & ERROR_BIT) != 0 || sight.alStatus != 0 ||
         !sight.lostPorts.empty();
}

std::string sightText(const SlaveSight& sight) {
  if (!sight.answers)
    return "does not answer";
  std::string text = slaveStateText(sight.alState & STATE_BITS);
  if (sight.alStatus != 0)
    text += format(", AL status 0x%04X: ", unsigned{sight.alStatus}) + alStatusText(sight.alStatus);
  for (const auto port : sight.lostPorts)
    text += format(", link lost at port %u", port);
  return text;
}

SlaveLook::SlaveLook(std::uint16_t master, const std::vector<FoundSlave>& start)
    : m_start(start), m_master(master), m_device(master) {}

std::vector<SlaveSight> SlaveLook::take() const {
  awaitScan(m_master);
  std::vector<SlaveSight> sights(m_start.size());
  for (const auto slave : suspectsFirst())
    sights[slave] = sight(slave);
  if (std::any_of(sights.begin(), sights.end(), isTroubled)) {
    for (std::size_t slave = 0; slave < sights.size(); ++slave) {
      if (sights[slave].answers)
        sights[slave].lostPorts = lostPorts(slave);
    }
  }
  return sights;
}

// A trouble may be over before a long bus is looked through, and what the master knows costs no frame.
std::vector<std::size_t> SlaveLook::suspectsFirst() const {
  std::vector<std::size_t> order(m_start.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_partition(order.begin(), order.end(), [&](std::size_t slave) {
    const auto info = m_master.slave(static_cast<std::uint16_t>(slave));
    return !info || info->error_flag != 0 || info->al_state != EC_AL_STATE_OP;
  });
  return order;
}

// A scan that begins meanwhile takes all slaves off the list.
SlaveSight SlaveLook::sight(std::size_t slave) const {
  auto seen = glance(slave);
  for (int left = 3; left > 0 && !seen.answers && m_master.scans(); --left) {
    awaitScan(m_master);
    seen = glance(slave);
  }
  return seen;
}

SlaveSight SlaveLook::glance(std::size_t slave) const {
  const auto& start = m_start[slave].info;
  const auto info = m_master.slave(static_cast<std::uint16_t>(slave));
  const bool listed = info && info->vendor_id == start.vendor_id && info->product_code == start.product_code;
  if (!listed)
    return {false};
  if (!m_device.isOpen())
    return {true, info->al_state};
  const auto state = reg(slave, AL_STATUS);
  if (!state)
    return {false};
  SlaveSight seen{true, static_cast<std::uint8_t>(*state & (STATE_BITS | ERROR_BIT))};
  if ((seen.alState & ERROR_BIT) != 0 || isBelowOp(seen))
    seen.alStatus = reg(slave, AL_STATUS_CODE).value_or(0);
  return seen;
}

std::vector<unsigned int> SlaveLook::lostPorts(std::size_t slave) const {
  std::vector<unsigned int> ports;
  const auto links = reg(slave, DL_STATUS);
  for (unsigned int port = 0; links && port < EC_MAX_PORTS; ++port) {
    const bool link = (*links >> (4 + port) & 1U) != 0;
    if (m_start[slave].info.ports[port].link.link_up != 0 && !link)
      ports.push_back(port);
  }
  return ports;
}

// A single frame may be lost.
std::optional<std::uint16_t> SlaveLook::reg(std::size_t slave, std::uint16_t address) const {
  std::optional<std::uint16_t> value;
  for (int left = 3; left > 0 && !value; --left)
    value = m_device.reg(static_cast<std::uint16_t>(slave), address);
  return value;
}

} // namespace igh_bus
