// The periodic loop and what makes its thread a real-time one.
#ifndef IGH_BUS_REAL_TIME_H
#define IGH_BUS_REAL_TIME_H

#include "host/IdleStates.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace igh_bus {

// SIGINT, SIGTERM and, unless nohup has it ignored, SIGHUP ask for an orderly end while an object of this
// class lives.
class StopSignals {
public:
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  static bool requested() { return sRequested.load(std::memory_order_relaxed); }
  // As if a signal had come; of any thread.
  static void requestByKey();
  static bool byKey() { return sByKey.load(std::memory_order_relaxed); }

private:
  static void receive(int);
  static std::atomic<bool> sRequested;
  static std::atomic<bool> sByKey;
  bool m_hangup;
};

// Exact timers, processor, priority, locked memory and processors that stay awake for the calling thread.
// What the system refuses, it goes on without.
class RealTime {
public:
  // Without `idleRequest`, as without a priority, idle states stay as deep as the system has them.
  RealTime(const std::optional<int>& priority, const std::optional<int>& cpu,
           const std::string& idleRequest = IdleStates::REQUEST_FILE);
  // Once everything is allocated that the cycle needs: from here on new memory is locked, too, and the stack
  // is there.
  void lockAllMemory();
  // Why the thread is no real-time one, in words; empty when it is.
  const std::string& missing() const { return m_missing; }
  // What makes wake-ups later than they need be in a thread that is a real-time one all the same.
  const std::string& hint() const { return m_hint; }

private:
  void lockMemory(int flags);
  void miss(const std::string& what);

  bool m_wanted;
  std::string m_missing;
  std::string m_hint;
  IdleStates m_idleStates;
};

// Wakes the caller at fixed times of CLOCK_MONOTONIC.
class Pacemaker {
public:
  explicit Pacemaker(std::uint32_t periodNs);
  // Sleeps until the next time. Late by whole periods, it leaves them out and counts them. False when a
  // signal asked for the end meanwhile.
  bool wait();
  // Sleeps until the next time, whatever signal comes, and counts nothing.
  void keepPace();
  void shift(std::int64_t ns) { m_nextNs += ns; }        // all times to come
  std::uint64_t leftOut() const { return m_leftOut; }    // periods
  std::int64_t wokenNs() const { return m_wokenNs; }     // CLOCK_MONOTONIC of the last wake-up
  std::int64_t latencyNs() const { return m_latencyNs; } // of the last wake-up
  std::int64_t latestNs() const { return m_latestNs; }   // the worst wake-up, behind its time

private:
  std::int64_t m_periodNs;
  std::int64_t m_nextNs;
  std::uint64_t m_leftOut = 0;
  std::int64_t m_wokenNs = 0;
  std::int64_t m_latencyNs = 0;
  std::int64_t m_latestNs = 0;
};

} // namespace igh_bus

#endif
