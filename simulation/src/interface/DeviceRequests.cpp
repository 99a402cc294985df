#include "interface/DeviceRequests.h"

#include "interface/Registry.h"
#include "slave/SlaveMemory.h"

#include <cerrno>
#include <cstddef>
#include <cstring>

namespace ethercat_simulation {

namespace {

constexpr unsigned long MODULE_REQUEST = 0x8008A400UL;
constexpr unsigned long SII_READ = 0xC010A410UL;
constexpr unsigned long REGISTER_READ = 0xC018A412UL;
constexpr unsigned long REGISTER_WRITE = 0x4018A413UL;
constexpr unsigned long REGISTER_EXCHANGE = 0xC018A45DUL;
constexpr unsigned long STATE_REQUEST = 0x4004A40BUL;
constexpr std::uint32_t MODULE_MAGIC = 36;

struct ModuleInfo {
  std::uint32_t magic;
  std::uint32_t masterCount;
};
static_assert(sizeof(ModuleInfo) == 8, "record of the device");

struct SiiRequest {
  std::uint16_t position;
  std::uint16_t offset; // in words, as the count
  std::uint32_t count;
  std::uint16_t* words;
};
static_assert(sizeof(SiiRequest) == 16 && offsetof(SiiRequest, words) == 8, "record of the device");

struct RegisterRequest {
  std::uint16_t position;
  std::uint8_t emergency; // a write goes by position on the wire, and nobody looks whether it was answered
  std::uint16_t address;
  std::uint64_t size;
  std::uint8_t* data;
};
static_assert(sizeof(RegisterRequest) == 24 && offsetof(RegisterRequest, address) == 4 &&
                  offsetof(RegisterRequest, size) == 8 && offsetof(RegisterRequest, data) == 16,
              "record of the device");

struct StateRequest {
  std::uint16_t position;
  std::uint8_t state;
};
static_assert(sizeof(StateRequest) == 4 && offsetof(StateRequest, state) == 2, "record of the device");

// Each serve... gives 0 or a positive error number.
int serveModule(void* record) {
  const ModuleInfo info{MODULE_MAGIC, Registry::instance().count()};
  std::memcpy(record, &info, sizeof info);
  return 0;
}

// From what the last scan has read: the slave is not asked.
int serveSii(Master& master, const void* record) {
  SiiRequest access{};
  std::memcpy(&access, record, sizeof access);
  const SlaveUnit* unit = master.topology().listed(access.position);
  if (unit == nullptr || access.count == 0 || access.offset + std::size_t{access.count} > SiiWords().size()) {
    return EINVAL;
  }
  if (access.words == nullptr) {
    return EFAULT;
  }
  std::memcpy(access.words, siiWords(unit->identity()).data() + access.offset,
              access.count * sizeof *access.words);
  return 0;
}

int serveRegisters(Master& master, unsigned long request, const void* record) {
  RegisterRequest access{};
  std::memcpy(&access, record, sizeof access);
  if (access.size == 0) {
    return 0;
  }
  if (access.data == nullptr) {
    return EFAULT;
  }
  if (access.size > EscRegisters::SPACE) {
    return EIO;
  }
  if (request == REGISTER_READ) {
    return master.slaves().readRegisters(access.position, access.address, access.data, access.size);
  }
  const std::vector<std::uint8_t> written(access.data, access.data + access.size);
  int error = 0;
  if (request == REGISTER_EXCHANGE) {
    error = master.slaves().readRegisters(access.position, access.address, access.data, access.size);
  }
  if (error == 0) {
    error = master.slaves().writeRegisters(access.position, access.address, written.data(), written.size());
  }
  return access.emergency != 0 ? 0 : error;
}

int serveState(Master& master, const void* record) {
  StateRequest wish{};
  std::memcpy(&wish, record, sizeof wish);
  return master.slaves().requestState(wish.position, wish.state);
}

} // namespace

int serveRequest(Master& master, bool writable, unsigned long request, void* record) {
  const bool writes = request == REGISTER_WRITE || request == REGISTER_EXCHANGE || request == STATE_REQUEST;
  if (!writes && request != MODULE_REQUEST && request != REGISTER_READ && request != SII_READ) {
    return ENOTTY;
  }
  if (writes && !writable) {
    return EPERM;
  }
  if (record == nullptr) {
    return EFAULT;
  }
  switch (request) {
  case MODULE_REQUEST:
    return serveModule(record);
  case SII_READ:
    return serveSii(master, record);
  case STATE_REQUEST:
    return serveState(master, record);
  default:
    return serveRegisters(master, request, record);
  }
}

} // namespace ethercat_simulation
