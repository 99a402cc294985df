#include "slave/EscRegisters.h"

namespace ethercat_simulation {

namespace {

constexpr std::size_t TYPE = 0x0000;
constexpr std::size_t CAPABILITIES = 0x0004;
constexpr std::size_t DL_STATUS = 0x0110;
constexpr std::size_t STATION_ADDRESS = 0x0010;
constexpr std::size_t AL_STATUS = 0x0130;
constexpr std::size_t AL_STATUS_CODE = 0x0134;
constexpr std::size_t SYSTEM_TIME = 0x0910;
constexpr std::uint8_t AL_ERROR_BIT = 0x10;

// Bytes of a register, laid over the part of a read that covers it.
class Overlay {
public:
  Overlay(std::size_t address, std::uint8_t* data, std::size_t size)
      : m_address(address), m_data(data), m_size(size) {}
  void put(std::size_t place, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) {
      if (place + i >= m_address && place + i < m_address + m_size) {
        m_data[place + i - m_address] = static_cast<std::uint8_t>(value >> 8 * i);
      }
    }
  }

private:
  std::size_t m_address;
  std::uint8_t* m_data;
  std::size_t m_size;
};

bool onlyTells(std::size_t address) {
  return address < STATION_ADDRESS || address == DL_STATUS || address == DL_STATUS + 1 ||
         (address >= AL_STATUS && address < AL_STATUS + 6) ||
         (address >= SYSTEM_TIME && address < SYSTEM_TIME + 8);
}

} // namespace

void EscRegisters::read(std::uint16_t address, std::uint8_t* data, std::size_t size, const Live& live) const {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t place = address + i;
    data[i] = isCounter(place)          ? m_counters[place - FIRST_COUNTER]
              : place < m_memory.size() ? m_memory[place]
                                        : std::uint8_t{0};
  }
  Overlay overlay(address, data, size);
  overlay.put(TYPE, 0x03010304, 4); // type, revision, build
  // 16 FMMUs, 16 sync managers, 8 KiB of memory, ports 0 and 1; features with or without a clock of 64 bits.
  overlay.put(CAPABILITIES, 0x0F081010, 4);
  overlay.put(CAPABILITIES + 4, live.hasClock ? 0x01CCU : 0x01C0U, 2);
  // Link and communication at port 0 and, when a slave follows, at 1; the other ports are closed.
  overlay.put(DL_STATUS, live.hasNext ? 0x5A31U : 0x5611U, 2);
  overlay.put(STATION_ADDRESS, live.stationAddress, 2);
  overlay.put(AL_STATUS, live.alState | (live.alError ? AL_ERROR_BIT : 0U), 2);
  overlay.put(AL_STATUS_CODE, live.alCode, 2);
  if (live.hasClock) {
    overlay.put(SYSTEM_TIME, live.systemTime, 8);
  }
}

void EscRegisters::write(std::uint16_t address, const std::uint8_t* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t place = address + i;
    if (isCounter(place)) {
      m_counters[place - FIRST_COUNTER] = 0;
    } else if (!onlyTells(place)) {
      store(place, data[i]);
    }
  }
}

void EscRegisters::set(std::uint16_t address, const std::vector<std::uint8_t>& bytes) {
  for (std::size_t i = 0; i < bytes.size() && holds(address, i + 1); ++i) {
    if (isCounter(address + i)) {
      m_counters[address + i - FIRST_COUNTER] = bytes[i];
    } else {
      store(address + i, bytes[i]);
    }
  }
}

void EscRegisters::clear() {
  m_counters.fill(0);
  std::fill(m_memory.begin(), m_memory.end(), std::uint8_t{0});
}

void EscRegisters::store(std::size_t address, std::uint8_t value) {
  m_memory.resize(std::max(m_memory.size(), address + 1));
  m_memory[address] = value;
}

} // namespace ethercat_simulation
