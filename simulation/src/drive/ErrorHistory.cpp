#include "drive/ErrorHistory.h"

namespace ethercat_simulation {

namespace {

constexpr std::uint16_t HISTORY = 0x1003;

// The class of an error code in the error register; the generic bit is set with each of them.
std::uint8_t classOf(std::uint16_t code) {
  constexpr std::uint8_t GENERIC = 0x01;
  constexpr std::uint8_t CURRENT = 0x02;
  constexpr std::uint8_t VOLTAGE = 0x04;
  constexpr std::uint8_t TEMPERATURE = 0x08;
  constexpr std::uint8_t COMMUNICATION = 0x10;
  constexpr std::uint8_t PROFILE = 0x20;
  constexpr std::uint8_t MANUFACTURER = 0x80;
  switch (code >> 12U) {
  case 0x0:
    return code == 0 ? 0 : GENERIC;
  case 0x2:
    return GENERIC | CURRENT;
  case 0x3:
    return GENERIC | VOLTAGE;
  case 0x4:
    return GENERIC | TEMPERATURE;
  case 0x7:
    return GENERIC | PROFILE;
  case 0x8:
    return GENERIC | ((code >> 8U) == 0x81 ? COMMUNICATION : PROFILE);
  case 0xF:
    return GENERIC | MANUFACTURER;
  default:
    return GENERIC;
  }
}

} // namespace

ErrorHistory::ErrorHistory(const ObjectBytes& bytes) : m_register(bytes, 0x1001), m_count(bytes, HISTORY) {
  for (std::uint8_t subindex = 1; driveObjectSize(HISTORY, subindex) != 0; ++subindex) {
    m_errors.emplace_back(bytes, HISTORY, subindex);
  }
}

void ErrorHistory::add(std::uint16_t code) {
  for (std::size_t place = m_errors.size() - 1; place > 0; --place) {
    m_errors[place].set(m_errors[place - 1].get());
  }
  m_errors.front().set(code);
  m_count.set(static_cast<std::uint8_t>(std::min<std::size_t>(m_count.get() + 1U, m_errors.size())));
}

void ErrorHistory::step(std::uint16_t code) {
  m_register.set(classOf(code));
  if (m_count.get() == 0 && m_errors.front().get() != 0) {
    for (auto& error : m_errors) {
      error.set(0);
    }
  }
}

} // namespace ethercat_simulation
