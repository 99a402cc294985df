#include "EthercatObject/Registers/EscRegisters.h"

#include "EthercatObject/Base/PlatformRelease.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/ioctl.h>

namespace {

constexpr unsigned short ERROR_COUNTERS = 0x0300;
constexpr unsigned long ERROR_COUNTER_BYTES = 20;

// Records and request codes of the device file, as the platform's kernel side reads them.
struct _STATE_REQUEST {
  unsigned short slavePosition;
  unsigned char alState;
};
static_assert(sizeof(_STATE_REQUEST) == 4 && offsetof(_STATE_REQUEST, alState) == 2);

constexpr unsigned int DEVICE = 0xA4;
constexpr unsigned long REGISTER_READ = _IOWR(DEVICE, 0x12, _REGISTER_REQUEST);
constexpr unsigned long REGISTER_WRITE = _IOW(DEVICE, 0x13, _REGISTER_REQUEST);
constexpr unsigned long STATE_REQUEST = _IOW(DEVICE, 0x0B, _STATE_REQUEST);
static_assert(REGISTER_READ == 0xC018A412 && REGISTER_WRITE == 0x4018A413 && STATE_REQUEST == 0x4004A40B);

} // namespace

bool CEscRegisters::access(unsigned long code, unsigned short slave, unsigned short address,
                           unsigned char* data, unsigned long size) const {
  _REGISTER_REQUEST request{};
  request.slavePosition = slave;
  request.address = address;
  request.size = size;
  request.data = data;
  if (size > 0) {
    std::memset(data, 0, size);
  }
  return ioctl(m_iDevice, code, &request) >= 0;
}

bool CEscRegisters::read(unsigned short slave, unsigned short address, unsigned char* data,
                         unsigned long size) const {
  if (m_iDevice == -1 || (data == nullptr && size > 0)) {
    return false;
  }
  if (!access(REGISTER_READ, slave, address, data, size)) {
    std::fprintf(stderr, "EscRegRead failed while slave = %i, address = %x, size = %zu, errno = %s\n", slave,
                 static_cast<unsigned int>(address), static_cast<size_t>(size), std::strerror(errno));
    return false;
  }
  return true;
}

bool CEscRegisters::write(unsigned short slave, unsigned short address, unsigned char* data,
                          unsigned long size) const {
  if (m_iDevice == -1 || (data == nullptr && size > 0)) {
    return false;
  }
  if (!access(REGISTER_WRITE, slave, address, data, size)) {
    std::fprintf(stderr, "writeEscReg failed while slave = %i, address = %x, size = %zu, errno = %s\n", slave,
                 static_cast<unsigned int>(address), static_cast<size_t>(size), std::strerror(errno));
    return false;
  }
  std::printf("writeEscReg succeed while slave = %i, address = %x, size = %zu\n", slave,
              static_cast<unsigned int>(address), static_cast<size_t>(size));
  return true;
}

bool CEscRegisters::requestState(unsigned short slave, unsigned char state) const {
  if (m_iDevice == -1) {
    return false;
  }
  _STATE_REQUEST request{slave, state};
  if (ioctl(m_iDevice, STATE_REQUEST, &request) != 0) {
    std::fprintf(stderr, "Failed to request slave state: slave = %i, state = %d, errno = %s\n", slave, state,
                 std::strerror(errno));
    return false;
  }
  return true;
}

bool CEscRegisters::clearErrors(unsigned short slave) const {
  unsigned char zeros[ERROR_COUNTER_BYTES];
  return write(slave, ERROR_COUNTERS, zeros, sizeof zeros);
}
