// A bus in the hands of a step: activated and cycled, with the outputs at 0.
#ifndef IGH_BUS_CHECK_BENCH_H
#define IGH_BUS_CHECK_BENCH_H

#include "bus/Session.h"
#include "check/CheckedBus.h"
#include "run/ReferenceClock.h"
#include "text/Redirection.h"

#include <atomic>
#include <exception>
#include <thread>

namespace igh_bus::check {

struct BenchMode {
  bool exchangeMode = false;
  bool followReference = false;
};

// What happened in some cycles.
struct Measured {
  std::uint64_t cycles = 0;
  std::uint64_t inOp = 0; // of them, by the states
  std::uint64_t callbacks = 0;
  std::uint64_t leftOut = 0;        // cycles, for late wake-ups
  ErrorCounts errors;               // the sums only
  std::vector<std::size_t> changed; // inputs, by their number

  bool clean() const; // in OP and called back in every cycle, without an error
};

class Bench {
public:
  // Standard output is silent from here to the end: the library tells of its calls there. `prepare` runs just
  // before the activation. Throws Failure.
  Bench(const CheckedBus& bus, const BenchMode& mode, const std::function<void()>& prepare = nullptr);

  // The cycle since the activation from which on the bus stayed in OP; nothing when it was not there in
  // time, or a signal asked for the end.
  std::optional<std::uint64_t> climb(double seconds);
  Measured measure(std::uint64_t cycles);
  // One cycle, at its time. False once a signal has asked for the end.
  bool step();
  std::uint32_t state() const { return m_state; }
  const Session& session() const { return m_session; }
  void reactivate();
  // What the library's controller said of an interval that ended with the last step.
  const std::optional<ClockPoint>& clockPoint() const { return m_clockPoint; }

  // Cycles on while `access`, which waits for slaves, runs on a thread of its own. What it throws is thrown
  // here.
  template <typename Access> void beside(Access access);

  // Slaves that are not in OP, with the reason that they give.
  std::vector<std::string> belowOp();

private:
  const CheckedBus& m_bus;
  RunOptions m_options;
  StdoutSilencer m_silence;
  Session m_session;
  Pacemaker m_pacemaker;
  std::optional<ReferenceFollower> m_follower;
  std::optional<ClockPoint> m_clockPoint;
  std::uint64_t m_activated = 0; // cycle
  std::uint32_t m_state = 0;
};

template <typename Access> void Bench::beside(Access access) {
  std::atomic<bool> done{false};
  std::exception_ptr failure;
  std::thread reader([&] {
    try {
      access();
    } catch (...) {
      failure = std::current_exception();
    }
    done.store(true, std::memory_order_release);
  });
  while (!done.load(std::memory_order_acquire))
    step();
  reader.join();
  if (failure)
    std::rethrow_exception(failure);
}

} // namespace igh_bus::check

#endif
