// Absolute sleeps on the monotonic clock.
#ifndef ETHERCATOBJECT_SLEEPUNTIL_H
#define ETHERCATOBJECT_SLEEPUNTIL_H

#include <cerrno>
#include <ctime>

inline void advance(timespec& time, unsigned int nanoseconds) {
  constexpr unsigned int NS_PER_SECOND = 1000000000;
  time.tv_sec += static_cast<time_t>(nanoseconds / NS_PER_SECOND);
  time.tv_nsec += static_cast<long>(nanoseconds % NS_PER_SECOND);
  if (time.tv_nsec >= static_cast<long>(NS_PER_SECOND)) {
    time.tv_nsec -= static_cast<long>(NS_PER_SECOND);
    ++time.tv_sec;
  }
}

inline void sleepUntil(const timespec& time) {
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
  }
}

#endif
