#include "wire/Line.h"

#include <algorithm>

namespace ethercat_simulation {

SlaveUnit& Line::insert(std::size_t position, const Slave& slave) {
  m_units.push_back(std::make_unique<SlaveUnit>(slave));
  SlaveUnit& unit = *m_units.back();
  unit.ask(m_asked);
  const std::size_t place = std::min(position, m_wire.size());
  m_wire.insert(m_wire.begin() + static_cast<std::ptrdiff_t>(place), &unit);
  m_hasDrives = m_hasDrives || unit.hasDrive();
  reach(place);
  return unit;
}

bool Line::remove(std::size_t position) {
  if (position >= m_wire.size()) {
    return false;
  }
  m_wire[position]->setPresent(false);
  m_wire.erase(m_wire.begin() + static_cast<std::ptrdiff_t>(position));
  countLostLink(position);
  reach(position);
  return true;
}

bool Line::setWireBroken(std::size_t position, bool broken) {
  SlaveUnit* unit = at(position);
  if (unit == nullptr || unit->isWireBroken() == broken) {
    return false;
  }
  unit->setWireBroken(broken);
  if (broken) {
    countLostLink(position + 1);
  }
  reach(position + 1);
  return true;
}

bool Line::setPowered(std::size_t position, bool powered) {
  SlaveUnit* unit = at(position);
  if (unit == nullptr || unit->isPowered() == powered) {
    return false;
  }
  unit->setPowered(powered);
  if (!powered) {
    countLostLink(position);
    countLostLink(position + 1);
  }
  reach(position);
  return true;
}

void Line::setLink(bool up) {
  if (m_link && !up && !m_wire.empty()) {
    m_wire.front()->registers().count(EscRegisters::LOST_LINK);
  }
  m_link = up;
}

// The bus is a line: nothing reaches a slave behind one without power. Those before the place of a change
// keep what they have, so that a bus of many slaves is built in time that grows with their number.
void Line::reach(std::size_t from) {
  bool open = m_reached >= from && (from == 0 || !m_wire[from - 1]->isWireBroken());
  m_reached = std::min(m_reached, from);
  for (std::size_t position = from; position < m_wire.size(); ++position) {
    SlaveUnit& unit = *m_wire[position];
    open = open && unit.isPowered();
    unit.setPresent(open);
    m_reached += open ? 1U : 0U;
    open = open && !unit.isWireBroken();
  }
}

// Of both ports at the wire in front of this position.
void Line::countLostLink(std::size_t position) {
  if (position > 0 && position <= m_wire.size()) {
    m_wire[position - 1]->registers().count(EscRegisters::LOST_LINK + 1);
  }
  if (position < m_wire.size()) {
    m_wire[position]->registers().count(EscRegisters::LOST_LINK);
  }
}

void Line::countLostFrame() {
  std::uint16_t counter = EscRegisters::INVALID_FRAME;
  for (std::size_t i = 0; i < m_reached; ++i) {
    m_wire[i]->registers().count(counter);
    counter = EscRegisters::FORWARDED_ERROR;
  }
}

bool Line::stepDrives() {
  bool changed = false;
  if (m_hasDrives) {
    for (SlaveUnit* unit : m_wire) {
      changed = (unit->hasDrive() && unit->stepDrive()) || changed;
    }
  }
  return changed;
}

bool Line::hasReferenceClock() const {
  return std::any_of(m_wire.begin(), m_wire.begin() + static_cast<std::ptrdiff_t>(m_reached),
                     [](const SlaveUnit* unit) { return unit->identity().distributedClocks; });
}

bool Line::anyAnswers() const {
  return std::any_of(m_wire.begin(), m_wire.begin() + static_cast<std::ptrdiff_t>(m_reached),
                     [](const SlaveUnit* unit) { return unit->responding(); });
}

void Line::list(std::vector<SlaveUnit*>& slaves) const {
  slaves.assign(m_wire.begin(), m_wire.begin() + static_cast<std::ptrdiff_t>(m_reached));
}

std::uint8_t Line::states() const {
  std::uint8_t states = 0;
  for (std::size_t i = 0; i < m_reached; ++i) {
    states |= m_wire[i]->state();
  }
  return states;
}

void Line::askForOp(bool asked) {
  m_asked = asked;
  for (const auto& unit : m_units) {
    unit->ask(asked);
  }
}

void Line::forgetConfigurations() {
  for (const auto& unit : m_units) {
    unit->forgetConfiguration();
  }
}

} // namespace ethercat_simulation
