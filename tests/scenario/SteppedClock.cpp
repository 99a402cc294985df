#include "SteppedClock.h"

#include <cerrno>
#include <ctime>
#include <dlfcn.h>
#include <ecrt.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace scenario {
namespace {

SteppedClock* stepped = nullptr; // null: the real clocks

// The call that the one of this name in this file stands before, after the time that it takes.
template <auto TAKES, class FUNCTION> FUNCTION* next(FUNCTION* /*own*/, const char* name) {
  static auto* const found = reinterpret_cast<FUNCTION*>(dlsym(RTLD_NEXT, name));
  if (stepped != nullptr) {
    stepped->now += stepped->*TAKES;
  }
  return found;
}

} // namespace

SteppedClock::SteppedClock() {
  stepped = this;
}
SteppedClock::~SteppedClock() {
  stepped = nullptr;
}

} // namespace scenario

using namespace scenario;

// They stand before those of the libraries, for every library of the process.
#pragma GCC visibility push(default)
extern "C" {
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (stepped == nullptr) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  *time = {stepped->now / 1000000000, static_cast<long>(stepped->now % 1000000000)};
  return 0;
}
int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* rest) {
  if (stepped == nullptr) {
    return static_cast<int>(syscall(SYS_clock_nanosleep, clock, flags, time, rest));
  }
  const std::int64_t left = time->tv_sec * 1000000000LL + time->tv_nsec - stepped->now;
  stepped->sleeps.push_back(left);
  const bool interrupted = stepped->interruptions > 0;
  stepped->interruptions -= interrupted ? 1U : 0U;
  stepped->now += left <= 0 ? 0 : interrupted ? left / 2 : left;
  return interrupted ? EINTR : 0;
}
void ecrt_master_receive(ec_master_t* master) {
  next<&SteppedClock::receiveTakes>(ecrt_master_receive, "ecrt_master_receive")(master);
}
ec_request_state_t ecrt_sdo_request_state(ec_sdo_request_t* request) {
  return next<&SteppedClock::sdoStateTakes>(ecrt_sdo_request_state, "ecrt_sdo_request_state")(request);
}
size_t ecrt_master_send(ec_master_t* master) {
  return next<&SteppedClock::sendTakes>(ecrt_master_send, "ecrt_master_send")(master);
}
}
#pragma GCC visibility pop
