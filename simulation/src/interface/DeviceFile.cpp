// open, close and ioctl of a program that was linked with -Wl,--wrap=open,--wrap=__open_2,--wrap=close,
// --wrap=ioctl. Only device files of masters are served here; a descriptor of one is a real descriptor of
// /dev/null, so it cannot be mistaken for any other that the program has.
#include "interface/DeviceFile.h"

#include "base/Lock.h"
#include "interface/DeviceRequests.h"
#include "interface/Registry.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ethercat_simulation {

namespace {

struct OpenFile {
  Master* master; // null after a reset
  bool writable;
};

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
  const Guard guard;
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
    table()[descriptor] = {master, (flags & O_ACCMODE) != O_RDONLY};
  }
  const int error = errno;
  note(*master, Call::deviceOpen, "\"" + std::string(path) + "\", " + std::to_string(flags), descriptor);
  errno = error;
  return descriptor;
}

// Asked for every descriptor that a thread of the program closes or controls; what is not of a device file
// must not wait behind the lock for its own work.
bool isDevice(int descriptor) {
  const Guard guard;
  return table().count(descriptor) > 0;
}

OpenFile lookUp(int descriptor) {
  const auto found = table().find(descriptor);
  return found != table().end() ? found->second : OpenFile{};
}

int closeDevice(int descriptor) {
  const Guard guard;
  Master* master = lookUp(descriptor).master;
  if (master != nullptr) {
    master->recorder().count(Call::deviceClose);
    int ordered = 0;
    if (master->recorder().shallFail(Call::deviceClose, &ordered)) {
      note(*master, Call::deviceClose, std::to_string(descriptor), -1);
      return orderedFailure(ordered);
    }
  }
  table().erase(descriptor);
  const int result = ::close(descriptor);
  if (master != nullptr) {
    note(*master, Call::deviceClose, std::to_string(descriptor), result);
  }
  return result;
}

int controlDevice(int descriptor, unsigned long request, void* record) {
  const Guard guard;
  const OpenFile file = lookUp(descriptor);
  Master* master = file.master;
  if (master == nullptr) {
    return failed(ENODEV);
  }
  master->recorder().count(Call::deviceIoctl);
  int result = 0;
  int ordered = 0;
  if (master->recorder().shallFail(Call::deviceIoctl, &ordered)) {
    result = orderedFailure(ordered);
  } else if (const int error = serveRequest(*master, file.writable, request, record)) {
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
  return static_cast<int>(std::count_if(table().begin(), table().end(),
                                        [&](const auto& entry) { return entry.second.master == &master; }));
}

void orphanDeviceFiles() {
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
int __wrap___open_2(const char* path, int flags);
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

int __wrap___open_2(const char* path, int flags) {
  return __wrap_open(path, flags);
}

int __wrap_close(int descriptor) {
  return ethercat_simulation::isDevice(descriptor) ? ethercat_simulation::closeDevice(descriptor)
                                                   : ::close(descriptor);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void* record = va_arg(arguments, void*);
  va_end(arguments);
  return ethercat_simulation::isDevice(descriptor)
             ? ethercat_simulation::controlDevice(descriptor, request, record)
             : ::ioctl(descriptor, request, record);
}

} // extern "C"
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
