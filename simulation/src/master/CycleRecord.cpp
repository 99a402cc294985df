#include "master/CycleRecord.h"

#include <cerrno>
#include <cstring>

namespace ethercat_simulation {

namespace {

constexpr std::size_t BUFFER_SIZE = std::size_t{1} << 20U;
constexpr unsigned int ERROR_BIT = 0x10; // as in the AL status register
constexpr Moment NANOSECONDS = 1'000'000'000;

void addBytes(std::string& row, const std::vector<std::uint8_t>& bytes) {
  constexpr const char* DIGITS = "0123456789ABCDEF";
  row += ',';
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    row += i > 0 ? " " : "";
    row += DIGITS[bytes[i] >> 4U];
    row += DIGITS[bytes[i] & 0xFU];
  }
}

} // namespace

void CycleRecord::begin(const std::string& path) {
  end();
  m_path = path;
}

void CycleRecord::open() {
  m_file.reset(std::fopen(m_path.c_str(), "we"));
  if (m_file == nullptr) {
    return check(false);
  }
  std::setvbuf(m_file.get(), nullptr, _IOFBF, BUFFER_SIZE);
  m_slaves = m_topology.line().size();
  m_start = m_time.now();
  m_row = "cycle,time_s";
  for (std::size_t i = 0; i < m_slaves; ++i) {
    for (const char* what : {".state", ".outputs", ".inputs"}) {
      m_row += "," + std::to_string(i) + what;
    }
  }
  m_row += '\n';
  check(std::fwrite(m_row.data(), 1, m_row.size(), m_file.get()) == m_row.size());
}

void CycleRecord::write(std::uint64_t cycle) {
  if (m_file == nullptr) {
    open();
  }
  if (m_file == nullptr) {
    return;
  }
  const Moment time = m_time.now() - m_start;
  char start[64];
  std::snprintf(start, sizeof start, "%llu,%lld.%09lld", static_cast<unsigned long long>(cycle),
                static_cast<long long>(time / NANOSECONDS), static_cast<long long>(time % NANOSECONDS));
  m_row = start;
  for (std::size_t i = 0; i < m_slaves; ++i) {
    const SlaveUnit* unit = m_topology.onWire(i);
    if (unit != nullptr && unit->present()) {
      addSlave(*unit);
    } else {
      m_row += ",,,";
    }
  }
  m_row += '\n';
  check(std::fwrite(m_row.data(), 1, m_row.size(), m_file.get()) == m_row.size());
}

void CycleRecord::addSlave(const SlaveUnit& unit) {
  m_row += "," + std::to_string(unit.state() | (unit.alError() ? ERROR_BIT : 0));
  addBytes(m_row, unit.outputs());
  addBytes(m_row, unit.inputs());
}

void CycleRecord::flush() {
  if (m_file != nullptr) {
    check(std::fflush(m_file.get()) == 0);
  }
}

void CycleRecord::end() {
  flush();
  m_file.reset();
  m_path.clear();
}

void CycleRecord::check(bool done) {
  if (!done) {
    std::fprintf(stderr, "%s: the record cannot be written: %s\n", m_path.c_str(), std::strerror(errno));
    m_file.reset();
    m_path.clear();
  }
}

} // namespace ethercat_simulation
