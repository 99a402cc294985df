#include "check/Registers.h"

#include "text/Failure.h"
#include "text/Redirection.h"
#include "text/Text.h"

#include <algorithm>
#include <igh_master.h>

namespace igh_bus::check {
namespace {

constexpr std::uint32_t ANY_PERIOD_NS = 1000000; // nothing is cycled

// The library's line of a failed access ends with the error in words.
void throwFailure(const std::string& printed, std::uint16_t slave, std::uint16_t address) {
  const std::string place = format("slave %u, register 0x%04X: ", unsigned{slave}, unsigned{address});
  static const std::string mark = "errno = ";
  const auto reason = printed.find(mark);
  if (reason == std::string::npos) {
    std::fputs(printed.c_str(), stderr); // of somebody else
    return;
  }
  const auto begin = reason + mark.size();
  throw Failure(busError, place + printed.substr(begin, printed.find('\n', begin) - begin));
}

[[noreturn]] void throwNoDevice(std::uint16_t master) {
  throw Failure(busError, format("/dev/EtherCAT%u cannot be opened", unsigned{master}));
}

} // namespace

Registers::Registers(std::uint16_t master) : m_master(master) {
  igh_master_initialize_ex(master, ANY_PERIOD_NS, false, false);
}

Registers::~Registers() {
  const StdoutSilencer silence; // it names the calls that it makes
  igh_master_uninitialize(m_master);
}

// A device file that could not be opened is passed over in silence; only the buffer tells, which is not
// zeroed then. Registers could hold the first filling by chance, but not the second one too.
std::vector<std::uint8_t> Registers::read(std::uint16_t slave, std::uint16_t address,
                                          std::uint32_t size) const {
  std::vector<std::uint8_t> bytes;
  for (const std::uint8_t filling : {std::uint8_t{0xA5}, std::uint8_t{0x5A}}) {
    bytes.assign(size, filling);
    StderrCapture capture;
    igh_master_read_esc_reg(m_master, slave, address, bytes.data(), size);
    throwFailure(capture.text(), slave, address);
    if (std::any_of(bytes.begin(), bytes.end(), [&](std::uint8_t byte) { return byte != filling; }))
      return bytes;
  }
  throwNoDevice(m_master);
}

void Registers::clear(std::uint16_t slave, std::uint16_t address, std::uint32_t size) const {
  std::vector<std::uint8_t> bytes(size, 0xFF); // zeroed by a write that was tried
  StderrCapture capture;
  {
    const StdoutSilencer silence;
    igh_master_write_esc_reg(m_master, slave, address, bytes.data(), size);
  }
  throwFailure(capture.text(), slave, address);
  if (bytes.front() != 0)
    throwNoDevice(m_master);
}

void Registers::clearErrorCounters(std::uint16_t slave) const {
  StderrCapture capture;
  bool cleared = false;
  {
    const StdoutSilencer silence;
    cleared = igh_master_clear_esc_error_regs(m_master, slave);
  }
  throwFailure(capture.text(), slave, ERROR_COUNTERS);
  if (!cleared)
    throwNoDevice(m_master);
}

} // namespace igh_bus::check
