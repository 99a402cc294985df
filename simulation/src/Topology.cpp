#include "Topology.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ethercat_simulation {

void Topology::request(SlaveUnit& unit, std::uint8_t state) {
  unit.request(state);
  wake();
  while (m_drive != Drive::running && unit.step(1, 0)) {
  }
}

void Topology::setTiming(Timing /*timing*/) {
  m_climbCycles = 2;
  m_scanCycles = 5;
}

void Topology::setClimbCycles(unsigned int cycles) {
  m_climbCycles = std::max(cycles, 1U);
}

void Topology::setScanCycles(unsigned int cycles) {
  m_scanCycles = std::max(cycles, 1U);
}

void Topology::changed() {
  wake();
  m_rescan = true;
}

void Topology::makeList() {
  m_list.assign(m_wire.begin(), m_wire.begin() + static_cast<std::ptrdiff_t>(m_reached));
}

void Topology::scanNow() {
  dropList();
  if (m_link) {
    makeList();
    m_rescan = false;
  }
  for (SlaveUnit* unit : m_list) {
    unit->settle();
  }
}

void Topology::drive(Drive drive) {
  // Nobody sees the list while nobody holds the master, so it is enough to scan at both ends of that time.
  const bool free = m_drive == Drive::nobody || drive == Drive::nobody;
  m_drive = drive;
  wake();
  if (drive == Drive::running) {
    broadcast();
    attachAll();
    restartSlaves();
    return;
  }
  m_seenLink = m_link;
  if ((free && m_rescan) || m_scanLeft > 0) {
    m_scanLeft = 0;
    scanNow();
  }
  for (SlaveUnit* unit : m_list) {
    unit->settle();
  }
}

void Topology::step() {
  if (m_settled) {
    return;
  }
  if (!m_seenLink) {
    dropList();
    m_rescan = true;
    m_scanLeft = 0;
    broadcast();
    return;
  }
  if (m_scanLeft > 0) {
    if (--m_scanLeft == 0) {
      makeList();
      attachAll();
      restartSlaves();
    }
    return;
  }
  broadcast();
  if (m_rescan) {
    startScan();
    return;
  }
  bool working = false;
  for (std::size_t i = 0; i < m_list.size(); ++i) {
    // Slaves are not equally quick, so their states come one after the other.
    working = m_list[i]->step(m_climbCycles, static_cast<unsigned int>(i % m_climbCycles)) || working;
  }
  m_settled = !working;
}

void Topology::restartSlaves() {
  for (SlaveUnit* unit : m_list) {
    // Who stayed in OP through a scan goes on as it is.
    if (unit->attached() != nullptr && unit->state() != stateOp) {
      unit->restart();
    }
  }
}

void Topology::startScan() {
  m_rescan = false;
  m_scanLeft = m_scanCycles;
  dropList();
}

void Topology::broadcast() {
  m_responding = 0;
  m_states = 0;
  if (m_seenLink) {
    m_responding = static_cast<unsigned int>(m_reached);
    for (std::size_t i = 0; i < m_reached; ++i) {
      m_states |= m_wire[i]->state();
    }
  }
}

void Topology::dropList() {
  for (SlaveUnit* unit : m_list) {
    unit->attach(nullptr);
  }
  m_list.clear();
  for (const auto& configuration : m_configurations) {
    configuration->detach();
  }
}

void Topology::attachAll() {
  for (const auto& configuration : m_configurations) {
    if (configuration->unit() == nullptr) {
      attach(*configuration);
    }
  }
}

void Topology::attach(SlaveConfiguration& configuration) {
  std::size_t position = 0;
  SlaveUnit* unit = find(configuration, &position);
  if (unit != nullptr && unit->attached() == nullptr) {
    configuration.attach(unit, static_cast<unsigned int>(position));
    wake();
  }
}

SlaveUnit* Topology::find(const SlaveConfiguration& configuration, std::size_t* position) const {
  std::size_t place = configuration.position();
  if (configuration.alias() != 0) {
    const auto named = std::find_if(m_list.begin(), m_list.end(), [&](const SlaveUnit* unit) {
      return unit->identity().alias == configuration.alias();
    });
    place += static_cast<std::size_t>(named - m_list.begin());
  }
  if (place >= m_list.size()) {
    return nullptr;
  }
  const Slave& identity = m_list[place]->identity();
  *position = place;
  return configuration.describes(identity.vendorId, identity.productCode) ? m_list[place] : nullptr;
}

void Topology::forgetConfigurations() {
  for (const auto& unit : m_units) {
    unit->forgetConfiguration();
  }
}

void Topology::state(ec_master_state_t& state) {
  if (m_drive != Drive::running) {
    broadcast(); // the idle master looks by itself all the time
  }
  state.slaves_responding = m_responding;
  state.al_states = m_states & 0x0FU;
  state.link_up = m_seenLink ? 1 : 0;
  state.scan_busy = m_scanLeft > 0 ? 1 : 0;
}

int Topology::slaveInfo(std::size_t position, ec_slave_info_t& info) const {
  if (position >= m_list.size()) {
    return -EINVAL;
  }
  constexpr std::uint16_t noSlave = 0xFFFF;
  const SlaveUnit& unit = *m_list[position];
  const Slave& identity = unit.identity();
  std::memset(&info, 0, sizeof info);
  info.position = static_cast<std::uint16_t>(position);
  info.vendor_id = identity.vendorId;
  info.product_code = identity.productCode;
  info.revision_number = identity.revisionNumber;
  info.serial_number = identity.serialNumber;
  info.alias = identity.alias;
  for (auto& port : info.ports) {
    port.next_slave = noSlave;
  }
  for (unsigned int port : {0U, 1U}) { // a line: in at port 0, out at port 1
    const bool connected = port == 0 || position + 1 < m_list.size();
    info.ports[port].desc = EC_PORT_MII;
    info.ports[port].link.link_up = connected ? 1 : 0;
    info.ports[port].link.signal_detected = connected ? 1 : 0;
    info.ports[port].link.loop_closed = connected ? 0 : 1;
  }
  if (position > 0) {
    info.ports[0].next_slave = static_cast<std::uint16_t>(position - 1);
  }
  if (position + 1 < m_list.size()) {
    info.ports[1].next_slave = static_cast<std::uint16_t>(position + 1);
  }
  constexpr std::uint8_t alErrorBit = 0x10;
  info.al_state = static_cast<std::uint8_t>(unit.state() | (unit.alCode() != 0 ? alErrorBit : 0U));
  info.error_flag = unit.hasError() ? 1 : 0;
  info.ready = unit.ready() ? 1 : 0;
  info.sync_count = static_cast<std::uint8_t>(identity.defaultMapping.size());
  const std::size_t length = std::min(identity.name.size(), sizeof info.name - 1);
  std::memcpy(info.name, identity.name.data(), length);
  return 0;
}

} // namespace ethercat_simulation
