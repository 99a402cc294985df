#include "host/RealTime.h"

#include "host/OrdinaryThread.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>

namespace igh_bus {
namespace {

constexpr std::int64_t NS_PER_SECOND = 1000000000;
constexpr const char* UNLOCKED = "locking memory was refused";

std::int64_t nowNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * NS_PER_SECOND + now.tv_nsec;
}

// Pages of the stack come at their first use, and the cycle must not wait for one.
__attribute__((noinline)) void touchStack() {
  constexpr std::size_t DEPTH = 262144;
  constexpr std::size_t PAGE = 4096;
  volatile char stack[DEPTH];
  for (std::size_t at = 0; at < DEPTH; at += PAGE)
    stack[at] = 0;
  static_cast<void>(stack[0]);
}

} // namespace

std::atomic<bool> StopSignals::sRequested{false};
std::atomic<bool> StopSignals::sByKey{false};

void StopSignals::requestByKey() {
  sByKey.store(true, std::memory_order_relaxed);
  sRequested.store(true, std::memory_order_relaxed);
}

void StopSignals::receive(int) {
  sRequested.store(true, std::memory_order_relaxed);
}

StopSignals::StopSignals() : m_hangup(true) {
  sRequested.store(false, std::memory_order_relaxed);
  sByKey.store(false, std::memory_order_relaxed); // of an earlier run in this process
  struct sigaction former {};
  sigaction(SIGHUP, nullptr, &former);
  m_hangup = former.sa_handler != SIG_IGN;
  struct sigaction action {};
  action.sa_handler = receive; // without SA_RESTART, so that a sleep ends
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  if (m_hangup)
    sigaction(SIGHUP, &action, nullptr);
}

StopSignals::~StopSignals() {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  if (m_hangup)
    std::signal(SIGHUP, SIG_DFL);
}

RealTime::RealTime(const std::optional<int>& priority, const std::optional<int>& cpu,
                   const std::string& idleRequest)
    : m_wanted(priority.has_value()) {
  rememberProcessors();
  prctl(PR_SET_TIMERSLACK, 1UL); // else an ordinary thread's sleeps end up to 50 us late
  if (cpu) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(*cpu), &set);
    if (sched_setaffinity(0, sizeof set, &set) != 0)
      miss(std::string("the processor of --cpu was refused, ") + std::strerror(errno));
  }
  if (!priority) {
    miss("no --priority");
    return;
  }
  lockMemory(MCL_CURRENT); // only to see whether it is allowed: the locked pages of a bus come later
  sched_param parameter{};
  parameter.sched_priority = *priority;
  if (sched_setscheduler(0, SCHED_FIFO, &parameter) != 0)
    miss(std::string("SCHED_FIFO was refused, ") + std::strerror(errno));
  if (idleRequest.empty())
    return;
  const auto refusal = m_idleStates.holdOff(idleRequest);
  if (!refusal.empty())
    m_hint = "deep idle states of the processors were not held off, " + refusal;
}

void RealTime::lockAllMemory() {
  touchStack();
  if (m_wanted && m_missing.find(UNLOCKED) == std::string::npos)
    lockMemory(MCL_CURRENT | MCL_FUTURE);
}

void RealTime::lockMemory(int flags) {
  if (mlockall(flags) != 0)
    miss(UNLOCKED + std::string(", ") + std::strerror(errno));
}

void RealTime::miss(const std::string& what) {
  m_missing += (m_missing.empty() ? "" : "; ") + what;
}

Pacemaker::Pacemaker(std::uint32_t periodNs) : m_periodNs(periodNs), m_nextNs(nowNs()) {}

bool Pacemaker::wait() {
  m_nextNs += m_periodNs;
  const timespec wake{m_nextNs / NS_PER_SECOND, m_nextNs % NS_PER_SECOND};
  while (!StopSignals::requested()) {
    if (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr) != EINTR)
      break;
  }
  m_wokenNs = nowNs();
  const std::int64_t late = m_wokenNs - m_nextNs;
  m_latencyNs = late;
  if (late > m_latestNs)
    m_latestNs = late;
  if (late >= m_periodNs) {
    m_leftOut += static_cast<std::uint64_t>(late / m_periodNs);
    m_nextNs += late / m_periodNs * m_periodNs;
  }
  return !StopSignals::requested();
}

void Pacemaker::keepPace() {
  m_nextNs += m_periodNs;
  const timespec wake{m_nextNs / NS_PER_SECOND, m_nextNs % NS_PER_SECOND};
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr) == EINTR) {
  }
}

} // namespace igh_bus
