// open, close and ioctl of a program that was linked with -Wl,--wrap=open,--wrap=close,--wrap=ioctl. Only
// device files of masters are served here; a descriptor of one is a real descriptor of /dev/null, so it
// cannot be mistaken for any other that the program has.
#include "interface/DeviceFile.h"

#include "interface/Registry.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ethercat_simulation {

namespace {

constexpr unsigned long MODULE_REQUEST = 0x8008A400UL;
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

struct OpenFile {
  Master* master; // null after a reset
  bool writable;
};

// Program threads open and close files of their own through the wraps, so this table is locked.
std::mutex tableMutex;
std::map<int, OpenFile>& table() {
  static auto& files = *new std::map<int, OpenFile>; // outlives every user, see Handles
  return files;
}

// Plain decimal, as the kernel names its nodes.
bool parseDevicePath(const char* path, unsigned int* index) {
  static const char prefix[] = "/dev/EtherCAT";
  constexpr std::size_t LENGTH = sizeof prefix - 1;
  if (path == nullptr || std::strncmp(path, prefix, LENGTH) != 0) {
    return false;
  }
  const char* digits = path + LENGTH;
  const std::size_t count = std::strspn(digits, "0123456789");
  if (count == 0 || count > 9 || digits[count] != '\0' || (digits[0] == '0' && count > 1)) {
    return false;
  }
  *index = 0;
  for (const char* digit = digits; *digit != '\0'; ++digit) {
    *index = *index * 10 + static_cast<unsigned int>(*digit - '0');
  }
  return true;
}

int failed(int error) {
  errno = error;
  return -1;
}

int orderedFailure(int result) {
  return failed(result < 0 ? -result : EIO);
}

void note(Master& master, Call call, const std::string& arguments, int result) {
  if (master.recorder().tracing()) {
    master.recorder().addTrace(call, arguments, std::to_string(result));
  }
}

int openDevice(unsigned int index, const char* path, int flags) {
  Master* master = Registry::instance().find(index);
  if (master == nullptr) {
    return failed(ENOENT);
  }
  master->recorder().count(Call::deviceOpen);
  int ordered = 0;
  int descriptor = -1;
  if (master->recorder().shallFail(Call::deviceOpen, &ordered)) {
    orderedFailure(ordered);
  } else {
    descriptor = ::open("/dev/null", flags & (O_ACCMODE | O_CLOEXEC | O_NONBLOCK));
  }
  if (descriptor >= 0) {
    const std::lock_guard<std::mutex> lock(tableMutex);
    table()[descriptor] = {master, (flags & O_ACCMODE) != O_RDONLY};
  }
  const int error = errno;
  note(*master, Call::deviceOpen, "\"" + std::string(path) + "\", " + std::to_string(flags), descriptor);
  errno = error;
  return descriptor;
}

// False when the descriptor is not one of a device file.
bool lookUp(int descriptor, OpenFile* file) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  const auto found = table().find(descriptor);
  if (found == table().end()) {
    return false;
  }
  *file = found->second;
  return true;
}

int closeDevice(int descriptor, Master* master) {
  if (master != nullptr) {
    master->recorder().count(Call::deviceClose);
    int ordered = 0;
    if (master->recorder().shallFail(Call::deviceClose, &ordered)) {
      note(*master, Call::deviceClose, std::to_string(descriptor), -1);
      return orderedFailure(ordered);
    }
  }
  {
    const std::lock_guard<std::mutex> lock(tableMutex);
    table().erase(descriptor);
  }
  const int result = ::close(descriptor);
  if (master != nullptr) {
    note(*master, Call::deviceClose, std::to_string(descriptor), result);
  }
  return result;
}

// Each serve... gives 0 or a positive error number.
int serveModule(void* record) {
  const ModuleInfo info{MODULE_MAGIC, Registry::instance().count()};
  std::memcpy(record, &info, sizeof info);
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

int serve(const OpenFile& file, unsigned long request, void* record) {
  const bool writes = request == REGISTER_WRITE || request == REGISTER_EXCHANGE || request == STATE_REQUEST;
  if (!writes && request != MODULE_REQUEST && request != REGISTER_READ) {
    return ENOTTY;
  }
  if (writes && !file.writable) {
    return EPERM;
  }
  if (record == nullptr) {
    return EFAULT;
  }
  switch (request) {
  case MODULE_REQUEST:
    return serveModule(record);
  case STATE_REQUEST:
    return serveState(*file.master, record);
  default:
    return serveRegisters(*file.master, request, record);
  }
}

int controlDevice(int descriptor, const OpenFile& file, unsigned long request, void* record) {
  Master* master = file.master;
  if (master == nullptr) {
    return failed(ENODEV);
  }
  master->recorder().count(Call::deviceIoctl);
  int result = 0;
  int ordered = 0;
  if (master->recorder().shallFail(Call::deviceIoctl, &ordered)) {
    result = orderedFailure(ordered);
  } else if (const int error = serve(file, request, record)) {
    result = failed(error);
  }
  const int error = errno;
  char text[64];
  std::snprintf(text, sizeof text, "%d, 0x%08lX", descriptor, request);
  note(*master, Call::deviceIoctl, text, result);
  errno = error;
  return result;
}

} // namespace

int openDeviceFiles(const Master& master) {
  const std::lock_guard<std::mutex> lock(tableMutex);
  return static_cast<int>(std::count_if(table().begin(), table().end(),
                                        [&](const auto& entry) { return entry.second.master == &master; }));
}

void orphanDeviceFiles() {
  const std::lock_guard<std::mutex> lock(tableMutex);
  for (auto& [descriptor, file] : table()) {
    file.master = nullptr;
  }
}

} // namespace ethercat_simulation

// The names are those that the linker makes of --wrap.
// NOLINTBEGIN(bugprone-reserved-identifier)
#pragma GCC visibility push(default)
extern "C" {

int __wrap_open(const char* path, int flags, ...);
int __wrap_close(int descriptor);
int __wrap_ioctl(int descriptor, unsigned long request, ...);

int __wrap_open(const char* path, int flags, ...) {
  unsigned int index = 0;
  if (ethercat_simulation::parseDevicePath(path, &index)) {
    return ethercat_simulation::openDevice(index, path, flags);
  }
  if ((flags & O_CREAT) == 0 && (flags & O_TMPFILE) != O_TMPFILE) {
    return ::open(path, flags);
  }
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = va_arg(arguments, mode_t);
  va_end(arguments);
  return ::open(path, flags, mode);
}

int __wrap_close(int descriptor) {
  ethercat_simulation::OpenFile file{};
  return ethercat_simulation::lookUp(descriptor, &file)
             ? ethercat_simulation::closeDevice(descriptor, file.master)
             : ::close(descriptor);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void* record = va_arg(arguments, void*);
  va_end(arguments);
  ethercat_simulation::OpenFile file{};
  return ethercat_simulation::lookUp(descriptor, &file)
             ? ethercat_simulation::controlDevice(descriptor, file, request, record)
             : ::ioctl(descriptor, request, record);
}

} // extern "C"
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
