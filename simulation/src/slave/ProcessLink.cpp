#include "slave/ProcessLink.h"

#include "slave/SlaveConfiguration.h"

namespace ethercat_simulation {

std::uint16_t ProcessLink::configure() const {
  return m_attached->writeTo(m_unit);
}

void ProcessLink::write() {
  if (!m_open || m_written != m_attached) {
    m_open = true;
    m_written = m_attached;
    m_written->processData().bind(m_unit);
  }
}

void ProcessLink::forget() {
  if (m_written != nullptr) {
    m_carried.clear();
    m_lastOutputs = m_written->processData().outputs();
    m_written->describeFmmus(m_carried);
  }
  m_attached = nullptr;
  m_written = nullptr;
}

void ProcessLink::resume() {
  if (!m_open || m_written != nullptr) {
    return;
  }
  std::vector<FmmuPlace> wanted;
  m_attached->describeFmmus(wanted);
  if (wanted == m_carried) {
    m_written = m_attached;
    m_written->processData().bind(m_unit);
  }
}

void ProcessLink::powerUp() {
  m_open = false;
  m_written = nullptr;
  m_lastOutputs.clear();
  m_carried.clear();
}

bool ProcessLink::takeObjects() const {
  return m_written != nullptr && m_written->processData().takeObjects(m_unit);
}

std::vector<std::uint8_t> ProcessLink::outputs() const {
  return m_written == nullptr ? m_lastOutputs : m_written->processData().outputs();
}

bool ProcessLink::outputValue(std::uint16_t index, std::uint8_t subindex, std::uint64_t& value) const {
  return m_written != nullptr && m_written->processData().outputValue(index, subindex, value);
}

std::vector<std::uint8_t> ProcessLink::inputs() const {
  return m_written == nullptr ? std::vector<std::uint8_t>() : m_written->processData().inputs();
}

} // namespace ethercat_simulation
