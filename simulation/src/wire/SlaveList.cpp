#include "wire/SlaveList.h"

#include "slave/SlaveMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ethercat_simulation {

void SlaveList::drop() {
  for (SlaveUnit* unit : m_slaves) {
    unit->attach(nullptr);
    unit->halt();
  }
  m_slaves.clear();
  for (SlaveConfiguration* configuration : m_configurations) {
    configuration->detach();
  }
}

bool SlaveList::add(SlaveConfiguration& configuration) {
  m_configurations.push_back(&configuration);
  return attach(configuration);
}

bool SlaveList::attachAll() {
  bool found = false;
  for (SlaveConfiguration* configuration : m_configurations) {
    if (configuration->unit() == nullptr) {
      found = attach(*configuration) || found;
    }
  }
  return found;
}

bool SlaveList::attach(SlaveConfiguration& configuration) const {
  std::size_t position = 0;
  SlaveUnit* unit = find(configuration, &position);
  if (unit == nullptr || unit->attached() != nullptr) {
    return false;
  }
  configuration.attach(unit, static_cast<unsigned int>(position));
  return true;
}

SlaveUnit* SlaveList::find(const SlaveConfiguration& configuration, std::size_t* position) const {
  std::size_t place = configuration.position();
  if (configuration.alias() != 0) {
    const auto named = std::find_if(m_slaves.begin(), m_slaves.end(), [&](const SlaveUnit* unit) {
      return unit->identity().alias == configuration.alias();
    });
    place += static_cast<std::size_t>(named - m_slaves.begin());
  }
  if (place >= m_slaves.size()) {
    return nullptr;
  }
  const Slave& identity = m_slaves[place]->identity();
  *position = place;
  return configuration.describes(identity.vendorId, identity.productCode) ? m_slaves[place] : nullptr;
}

void SlaveList::restart() const {
  for (SlaveUnit* unit : m_slaves) {
    // Who stayed in OP through a scan goes on as it is.
    if (unit->attached() != nullptr && unit->state() != STATE_OP) {
      unit->restart();
    } else if (unit->attached() != nullptr) {
      unit->resume();
    }
  }
}

int SlaveList::info(std::size_t position, ec_slave_info_t& info) const {
  if (position >= m_slaves.size()) {
    return -EINVAL;
  }
  constexpr std::uint16_t NO_SLAVE = 0xFFFF;
  const SlaveUnit& unit = *m_slaves[position];
  const Slave& identity = unit.identity();
  std::memset(&info, 0, sizeof info);
  info.position = static_cast<std::uint16_t>(position);
  info.vendor_id = identity.vendorId;
  info.product_code = identity.productCode;
  info.revision_number = identity.revisionNumber;
  info.serial_number = identity.serialNumber;
  info.alias = identity.alias;
  for (auto& port : info.ports) {
    port.next_slave = NO_SLAVE;
  }
  for (unsigned int port : {0U, 1U}) { // a line: in at port 0, out at port 1
    const bool connected = port == 0 || position + 1 < m_slaves.size();
    info.ports[port].desc = EC_PORT_MII;
    info.ports[port].link.link_up = connected ? 1 : 0;
    info.ports[port].link.signal_detected = connected ? 1 : 0;
    info.ports[port].link.loop_closed = connected ? 0 : 1;
  }
  if (position > 0) {
    info.ports[0].next_slave = static_cast<std::uint16_t>(position - 1);
  }
  if (position + 1 < m_slaves.size()) {
    info.ports[1].next_slave = static_cast<std::uint16_t>(position + 1);
  }
  constexpr std::uint8_t AL_ERROR_BIT = 0x10;
  info.al_state = static_cast<std::uint8_t>(unit.state() | (unit.alError() ? AL_ERROR_BIT : 0U));
  info.error_flag = unit.hasError() ? 1 : 0;
  info.ready = unit.ready() ? 1 : 0;
  info.sync_count = syncManagerCount(identity);
  const std::size_t length = std::min(identity.name.size(), sizeof info.name - 1);
  std::memcpy(info.name, identity.name.data(), length);
  return 0;
}

} // namespace ethercat_simulation
