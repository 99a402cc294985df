#include "control/ControlFace.h"

#include "busfile/BusFile.h"
#include "drive/DriveObjects.h"
#include "interface/DeviceFile.h"

namespace ethercat_simulation {

unsigned int ControlFace::addSlave(const Slave& slave) {
  const Guard guard;
  m_master->topology().append(slave);
  return static_cast<unsigned int>(m_master->topology().line().size() - 1);
}

std::string ControlFace::configure(const std::string& json) {
  const Guard guard;
  const Line& line = m_master.get().topology().line();
  std::vector<Slave> slaves;
  for (std::size_t i = 0; i < line.size(); ++i) {
    slaves.push_back(line.at(i)->identity());
  }
  BusPlan plan;
  std::string problem = readBusPart(json, slaves, plan);
  if (problem.empty()) {
    plan.build(m_master.get());
  }
  return problem;
}

std::uint8_t ControlFace::alState(unsigned int position) const {
  const Guard guard;
  m_master->topology().catchUp();
  const SlaveUnit* unit = m_master->topology().onWire(position);
  return unit != nullptr ? unit->state() : std::uint8_t{0};
}

int ControlFace::openDeviceFiles() const {
  const Guard guard;
  return ethercat_simulation::openDeviceFiles(m_master.get());
}

std::vector<std::uint8_t> ControlFace::outputs(unsigned int position) const {
  const Guard guard;
  const SlaveUnit* unit = m_master->topology().onWire(position);
  return unit != nullptr ? unit->outputs() : std::vector<std::uint8_t>();
}

bool ControlFace::outputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                              std::uint64_t& value) const {
  const Guard guard;
  const SlaveUnit* unit = m_master->topology().onWire(position);
  return unit != nullptr && unit->outputValue(index, subindex, value);
}

std::vector<std::uint8_t> ControlFace::inputs(unsigned int position) const {
  const Guard guard;
  const SlaveUnit* unit = m_master->topology().onWire(position);
  return unit != nullptr ? unit->inputs() : std::vector<std::uint8_t>();
}

void ControlFace::setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) {
  const Guard guard;
  if (SlaveUnit* unit = m_master->topology().onWire(position)) {
    unit->pinInputs(bytes);
  }
}

void ControlFace::setInputValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                                std::uint64_t value) {
  const Guard guard;
  if (SlaveUnit* unit = m_master->topology().onWire(position)) {
    unit->pinInput({index, subindex, value});
  }
}

std::vector<std::uint8_t> ControlFace::objectValue(unsigned int position, std::uint16_t index,
                                                   std::uint8_t subindex) const {
  const Guard guard;
  const SlaveUnit* unit = m_master->topology().onWire(position);
  const auto* value = unit != nullptr ? unit->dictionary().value(index, subindex) : nullptr;
  return value != nullptr ? *value : std::vector<std::uint8_t>();
}

bool ControlFace::setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                                 const std::vector<std::uint8_t>& bytes) {
  const Guard guard;
  SlaveUnit* unit = m_master->topology().onWire(position);
  const std::size_t size = unit != nullptr && unit->hasDrive() ? driveObjectSize(index, subindex) : 0;
  return unit != nullptr && (size == 0 || size == bytes.size()) &&
         unit->dictionary().setValue(index, subindex, bytes);
}

} // namespace ethercat_simulation
