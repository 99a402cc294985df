#include "control/ControlFace.h"

#include "interface/DeviceFile.h"

namespace ethercat_simulation {

unsigned int ControlFace::addSlave(const Slave& slave) {
  m_master.topology().append(slave);
  return static_cast<unsigned int>(m_master.topology().line().size() - 1);
}

std::uint8_t ControlFace::alState(unsigned int position) const {
  m_master.topology().catchUp();
  const SlaveUnit* unit = m_master.topology().onWire(position);
  return unit != nullptr ? unit->state() : std::uint8_t{0};
}

int ControlFace::openDeviceFiles() const {
  return ethercat_simulation::openDeviceFiles(m_master);
}

std::vector<std::uint8_t> ControlFace::outputs(unsigned int position) const {
  const SlaveUnit* unit = m_master.topology().onWire(position);
  return unit != nullptr ? unit->outputs() : std::vector<std::uint8_t>();
}

void ControlFace::setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) {
  if (SlaveUnit* unit = m_master.topology().onWire(position)) {
    unit->pinInputs(bytes);
  }
}

std::vector<std::uint8_t> ControlFace::objectValue(unsigned int position, std::uint16_t index,
                                                   std::uint8_t subindex) const {
  const SlaveUnit* unit = m_master.topology().onWire(position);
  const auto* value = unit != nullptr ? unit->dictionary().value(index, subindex) : nullptr;
  return value != nullptr ? *value : std::vector<std::uint8_t>();
}

bool ControlFace::setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                                 const std::vector<std::uint8_t>& bytes) {
  SlaveUnit* unit = m_master.topology().onWire(position);
  return unit != nullptr && unit->dictionary().setValue(index, subindex, bytes);
}

} // namespace ethercat_simulation
