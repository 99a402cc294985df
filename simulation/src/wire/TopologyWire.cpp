// The wire: which slaves are plugged in, and which of them frames reach.
#include "wire/Topology.h"

#include <algorithm>

namespace ethercat_simulation {

void Topology::insert(std::size_t position, const Slave& slave) {
  m_units.push_back(std::make_unique<SlaveUnit>(slave));
  m_units.back()->ask(m_drive == Drive::running);
  const std::size_t place = std::min(position, m_wire.size());
  m_wire.insert(m_wire.begin() + static_cast<std::ptrdiff_t>(place), m_units.back().get());
  m_list.reserve(m_wire.capacity()); // a scan in the cycle must not allocate
  if (m_drive == Drive::nobody && m_link) {
    m_units.back()->settle();
  }
  m_hasDrives = m_hasDrives || m_units.back()->hasDrive();
  reach(place);
}

void Topology::remove(std::size_t position) {
  if (position < m_wire.size()) {
    m_wire[position]->setPresent(false);
    m_wire.erase(m_wire.begin() + static_cast<std::ptrdiff_t>(position));
    countLostLink(position);
    reach(position);
  }
}

void Topology::setWireBroken(std::size_t position, bool broken) {
  SlaveUnit* unit = onWire(position);
  if (unit != nullptr && unit->isWireBroken() != broken) {
    unit->setWireBroken(broken);
    if (broken) {
      countLostLink(position + 1);
    }
    reach(position + 1);
  }
}

void Topology::setPowered(std::size_t position, bool powered) {
  SlaveUnit* unit = onWire(position);
  if (unit != nullptr && unit->isPowered() != powered) {
    unit->setPowered(powered);
    if (!powered) {
      countLostLink(position);
      countLostLink(position + 1);
    }
    reach(position);
  }
}

// The bus is a line: nothing reaches a slave behind one without power. Those before the place of a change
// keep what they have, so that a bus of many slaves is built in time that grows with their number.
void Topology::reach(std::size_t from) {
  bool open = m_reached >= from && (from == 0 || !m_wire[from - 1]->isWireBroken());
  m_reached = std::min(m_reached, from);
  for (std::size_t position = from; position < m_wire.size(); ++position) {
    SlaveUnit& unit = *m_wire[position];
    open = open && unit.isPowered();
    unit.setPresent(open);
    m_reached += open ? 1U : 0U;
    open = open && !unit.isWireBroken();
  }
  changed();
}

// Of both ports at the wire in front of this position.
void Topology::countLostLink(std::size_t position) {
  if (position > 0 && position <= m_wire.size()) {
    m_wire[position - 1]->registers().count(EscRegisters::LOST_LINK + 1);
  }
  if (position < m_wire.size()) {
    m_wire[position]->registers().count(EscRegisters::LOST_LINK);
  }
}

bool Topology::hasReferenceClock() const {
  return std::any_of(m_wire.begin(), m_wire.begin() + static_cast<std::ptrdiff_t>(m_reached),
                     [](const SlaveUnit* unit) { return unit->identity().distributedClocks; });
}

void Topology::countLostFrame() {
  std::uint16_t counter = EscRegisters::INVALID_FRAME;
  for (std::size_t i = 0; i < m_reached; ++i) {
    m_wire[i]->registers().count(counter);
    counter = EscRegisters::FORWARDED_ERROR;
  }
}

void Topology::stepDrives() {
  if (m_hasDrives) {
    for (SlaveUnit* unit : m_wire) {
      if (unit->hasDrive() && unit->stepDrive()) {
        wake();
      }
    }
  }
}

void Topology::setLink(bool up) {
  if (m_link && !up && !m_wire.empty()) {
    m_wire.front()->registers().count(EscRegisters::LOST_LINK);
  }
  m_link = up;
  wake();
  if (m_drive == Drive::running) {
    return; // seen at the next send
  }
  m_seenLink = up;
  if (!up) {
    dropList();
  }
  changed();
}

} // namespace ethercat_simulation
