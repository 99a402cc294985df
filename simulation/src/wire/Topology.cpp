#include "wire/Topology.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ethercat_simulation {

void Topology::request(SlaveUnit& unit, std::uint8_t state) {
  unit.request(state);
  wake();
  while (!m_inTime && m_drive != Drive::running && unit.step(1, 0)) {
  }
}

void Topology::setTiming(Timing timing) {
  constexpr Moment SCAN = 585 * MILLISECOND;
  m_inTime = timing == Timing::real;
  m_climbCycles = 2;
  m_scan = m_inTime ? Span{0, SCAN} : Span{5, 0};
}

void Topology::setClimbCycles(unsigned int cycles) {
  m_inTime = false;
  m_climbCycles = std::max(cycles, 1U);
}

void Topology::setScanCycles(unsigned int cycles) {
  m_scan = {std::max(cycles, 1U), 0};
}

void Topology::changed() {
  // The state machine meets the first slave that is gone before it counts the slaves anew.
  constexpr Moment TO_MISS = 20 * MILLISECOND;
  constexpr Moment TO_COUNT = 8 * MILLISECOND;
  if (m_inTime && m_drive == Drive::running) {
    const auto lost =
        std::find_if(m_list.begin(), m_list.end(), [](const SlaveUnit* unit) { return !unit->present(); });
    m_lost = lost == m_list.end() ? nullptr : *lost;
    m_noticeAt = m_time.now() + (m_lost != nullptr ? TO_MISS : TO_COUNT);
  }
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
  settleSlaves();
}

void Topology::settleSlaves() {
  // It takes its time too, and the next activation may come before.
  constexpr Moment TO_PREOP = 140 * MILLISECOND;
  for (SlaveUnit* unit : m_list) {
    if (m_inTime && unit->state() >= STATE_SAFEOP) {
      m_settleAt = m_settleAt != 0 ? m_settleAt : m_time.now() + TO_PREOP;
    } else {
      unit->settle();
    }
  }
}

void Topology::drive(Drive drive) {
  // Nobody sees the list while nobody holds the master, so it is enough to scan at both ends of that time.
  const bool free = m_drive == Drive::nobody || drive == Drive::nobody;
  catchUp();
  m_drive = drive;
  for (const auto& unit : m_units) {
    unit->ask(drive == Drive::running);
  }
  m_turn = nullptr;
  m_silentSince = 0;
  wake();
  if (drive == Drive::running) {
    look(m_time.now());
    attachAll();
    restartSlaves();
    return;
  }
  m_seenLink = m_link;
  if ((free && m_rescan) || m_scanning) {
    m_scanning = false;
    scanNow();
  }
  settleSlaves();
}

void Topology::seeLink() {
  // The driver needs a moment to believe in a link that is up again.
  constexpr Moment TO_BELIEVE = 9 * MILLISECOND;
  if (m_seenLink == m_link) {
    return;
  }
  if (m_inTime && m_link) {
    const Moment now = m_time.now();
    m_linkChange = m_linkChange != 0 ? m_linkChange : now + TO_BELIEVE;
    if (now < m_linkChange) {
      return;
    }
  }
  m_linkChange = 0;
  m_settled = false;
  m_seenLink = m_link;
}

void Topology::step(bool answered) {
  if (m_settled && !m_inTime) {
    return;
  }
  if (m_drive != Drive::running) {
    return; // the idle master does not ask slaves for more than PREOP
  }
  if (m_inTime) {
    stepInTime(answered, m_time.now());
  } else {
    stepCounted(answered);
  }
}

void Topology::stepCounted(bool answered) {
  if (!m_seenLink) {
    dropList();
    m_rescan = true;
    m_scanning = false;
    broadcast();
    return;
  }
  if (!answered) {
    return;
  }
  if (m_scanning) {
    if (m_scanEnd.ends(m_time.now())) {
      endScan();
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
    if (unit->attached() != nullptr && unit->state() != STATE_OP) {
      unit->restart();
    } else if (unit->attached() != nullptr) {
      unit->resume();
    }
  }
}

void Topology::startScan() {
  m_rescan = false;
  m_scanning = true;
  m_scanEnd.begin(m_scan, m_time.now());
  dropList();
}

void Topology::endScan() {
  m_scanning = false;
  makeList();
  attachAll();
  restartSlaves();
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
    unit->halt();
  }
  m_turn = nullptr;
  m_lost = nullptr;
  m_list.clear();
  for (SlaveConfiguration* configuration : m_configurations) {
    configuration->detach();
  }
}

void Topology::attachAll() {
  for (SlaveConfiguration* configuration : m_configurations) {
    if (configuration->unit() == nullptr) {
      attach(*configuration);
    }
  }
}

void Topology::add(SlaveConfiguration& configuration) {
  m_configurations.push_back(&configuration);
  attach(configuration);
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
  m_configurations.clear();
}

void Topology::state(ec_master_state_t& state) {
  if (m_drive != Drive::running) {
    catchUp();
    broadcast(); // the idle master looks by itself all the time
  }
  state.slaves_responding = m_responding;
  state.al_states = m_states & 0x0FU;
  state.link_up = m_seenLink ? 1 : 0;
  state.scan_busy = m_scanning ? 1 : 0;
}

int Topology::slaveInfo(std::size_t position, ec_slave_info_t& info) const {
  if (position >= m_list.size()) {
    return -EINVAL;
  }
  constexpr std::uint16_t NO_SLAVE = 0xFFFF;
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
    port.next_slave = NO_SLAVE;
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
  constexpr std::uint8_t AL_ERROR_BIT = 0x10;
  info.al_state = static_cast<std::uint8_t>(unit.state() | (unit.alError() ? AL_ERROR_BIT : 0U));
  info.error_flag = unit.hasError() ? 1 : 0;
  info.ready = unit.ready() ? 1 : 0;
  info.sync_count = static_cast<std::uint8_t>(identity.defaultMapping.size());
  const std::size_t length = std::min(identity.name.size(), sizeof info.name - 1);
  std::memcpy(info.name, identity.name.data(), length);
  return 0;
}

} // namespace ethercat_simulation
