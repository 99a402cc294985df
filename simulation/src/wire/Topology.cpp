#include "wire/Topology.h"

#include <algorithm>

namespace ethercat_simulation {

void Topology::insert(std::size_t position, const Slave& slave) {
  SlaveUnit& unit = m_line.insert(position, slave);
  m_list.reserve(m_line.capacity());
  if (m_drive == Drive::nobody && m_line.link()) {
    unit.settle();
  }
  changed();
}

void Topology::remove(std::size_t position) {
  if (m_line.remove(position)) {
    changed();
  }
}

void Topology::setWireBroken(std::size_t position, bool broken) {
  if (m_line.setWireBroken(position, broken)) {
    changed();
  }
}

void Topology::setPowered(std::size_t position, bool powered) {
  if (m_line.setPowered(position, powered)) {
    changed();
  }
}

void Topology::setLink(bool up) {
  m_line.setLink(up);
  wake();
  if (m_drive == Drive::running) {
    return; // seen at the next send
  }
  m_sight.set(up);
  if (!up) {
    dropList();
  }
  changed();
}

void Topology::changed() {
  // The state machine meets the first slave that is gone before it counts the slaves anew.
  constexpr Moment TO_MISS = 20 * MILLISECOND;
  constexpr Moment TO_COUNT = 8 * MILLISECOND;
  if (m_inTime && m_drive == Drive::running) {
    const auto& slaves = m_list.slaves();
    const auto lost =
        std::find_if(slaves.begin(), slaves.end(), [](const SlaveUnit* unit) { return !unit->present(); });
    m_lost = lost == slaves.end() ? nullptr : *lost;
    m_noticeAt = m_time.now() + (m_lost != nullptr ? TO_MISS : TO_COUNT);
  }
  wake();
  m_rescan = true;
}

void Topology::wake() {
  m_climb.wake();
  m_answersKnown = false;
}

void Topology::add(SlaveConfiguration& configuration) {
  if (m_list.add(configuration)) {
    wake();
  }
}

void Topology::attachAll() {
  if (m_list.attachAll()) {
    wake();
  }
}

void Topology::forgetConfigurations() {
  m_line.forgetConfigurations();
  m_list.forgetConfigurations();
}

void Topology::setTiming(Timing timing) {
  constexpr Moment SCAN = 585 * MILLISECOND;
  m_inTime = timing == Timing::real;
  m_climb.setCycles(2);
  m_scan = m_inTime ? Span{0, SCAN} : Span{5, 0};
}

void Topology::setClimbCycles(unsigned int cycles) {
  m_inTime = false;
  m_climb.setCycles(std::max(cycles, 1U));
}

void Topology::setScanCycles(unsigned int cycles) {
  m_scan = {std::max(cycles, 1U), 0};
}

void Topology::drive(Drive drive) {
  // While nobody holds the master, who looks at the list makes it anew, see catchUp().
  const bool free = m_drive == Drive::nobody || drive == Drive::nobody;
  catchUp();
  m_drive = drive;
  m_line.askForOp(drive == Drive::running);
  m_climb.dropTurn();
  m_silentSince = 0;
  wake();
  if (drive == Drive::running) {
    look(m_time.now());
    attachAll();
    m_list.restart();
    return;
  }
  m_sight.set(m_line.link());
  if ((free && m_rescan) || m_scanning) {
    m_scanning = false;
    scanNow();
  }
  settleSlaves();
}

void Topology::request(SlaveUnit& unit, std::uint8_t state) {
  unit.request(state);
  wake();
  while (!m_inTime && m_drive != Drive::running && unit.step(1, 0)) {
  }
}

void Topology::seeLink() {
  const bool link = m_line.link();
  if (m_sight.up() == link) {
    return;
  }
  if (m_inTime ? m_sight.look(link, m_time.now()) : m_sight.believe(link)) {
    m_climb.wake();
  }
}

void Topology::stepDrives() {
  if (m_line.stepDrives()) {
    wake();
  }
}

void Topology::step(bool answered) {
  if (m_climb.isSettled() && !m_inTime) {
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
  if (!m_sight.up()) {
    dropList();
    m_rescan = true;
    m_scanning = false;
    m_look.take(m_line, false);
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
  m_look.take(m_line, true);
  if (m_rescan) {
    startScan();
  } else {
    m_climb.count(m_list.slaves());
  }
}

void Topology::dropList() {
  m_list.drop();
  m_climb.dropTurn();
  m_lost = nullptr;
}

void Topology::scanNow() {
  dropList();
  if (m_line.link()) {
    m_list.make(m_line);
    m_rescan = false;
  }
  settleSlaves();
}

void Topology::startScan() {
  m_rescan = false;
  m_scanning = true;
  m_scanEnd.begin(m_scan, m_time.now());
  dropList();
}

void Topology::endScan() {
  m_scanning = false;
  m_list.make(m_line);
  attachAll();
  m_list.restart();
}

void Topology::settleSlaves() {
  if (m_inTime) {
    m_climb.settleInTime(m_list.slaves(), m_time.now());
  } else {
    m_climb.settleAtOnce(m_list.slaves());
  }
}

void Topology::state(ec_master_state_t& state) {
  if (m_drive != Drive::running) {
    catchUp();
    m_look.take(m_line, m_sight.up()); // the idle master looks by itself all the time
  }
  state.slaves_responding = m_look.responding();
  state.al_states = m_look.states() & 0x0FU;
  state.link_up = m_sight.up() ? 1 : 0;
  state.scan_busy = m_scanning ? 1 : 0;
}

} // namespace ethercat_simulation
