// What one master remembers of the calls made on it: counts, ordered failures, misuse and, when asked, a
// trace.
#ifndef ETHERCAT_SIMULATION_RECORDER_H
#define ETHERCAT_SIMULATION_RECORDER_H

#include <ethercat_simulation/Calls.h>

#include <array>
#include <deque>

namespace ethercat_simulation {

constexpr std::size_t CALL_KINDS = static_cast<std::size_t>(Call::count);

const char* callName(Call call);

class Recorder {
public:
  void count(Call call) { ++m_counts[static_cast<std::size_t>(call)]; }
  std::uint64_t counted(Call call) const { return m_counts[static_cast<std::size_t>(call)]; }

  void orderFailure(Call call, int result, unsigned int after);
  // True when this call is one of those that were ordered to fail; then *result is the ordered result.
  bool shallFail(Call call, int* result) {
    return (m_armed >> static_cast<unsigned int>(call) & 1U) != 0 && takeOrder(call, result);
  }

  // Counts a call made at the wrong time of the master's life.
  void checkOrder(Call call, bool active) {
    const When when = whenOf(call);
    if (when != When::any && (when == When::cycle) != active) {
      addOutOfOrder(call, active);
    }
  }
  void addBusyRequest(Call call, const char* which); // "the" or "a"
  void addDeadHandle(Call call, bool isNull);
  void addForeignHandle(Call call);
  const Misuse& misuse() const { return m_misuse; }

  bool tracing() const { return m_tracing; }
  void setTracing(bool on) { m_tracing = on; }
  void addTrace(Call call, const std::string& arguments, const std::string& result);
  const std::vector<TraceEntry>& trace() const { return m_trace; }
  void clearTrace() { m_trace.clear(); }

private:
  enum class When : std::uint8_t { any, setUp, cycle };
  struct Order {
    int result;
    unsigned int after;
  };

  static constexpr When whenOf(Call call) {
    switch (call) {
    // Not the configuration of slaves: after a change of the bus, an application scans and configures on the
    // active master before it activates anew.
    case Call::configDc:
    case Call::createDomain:
    case Call::createSdoRequest:
    case Call::createSdoRequestComplete:
    case Call::regPdoEntryList:
    case Call::activate:
      return When::setUp;
    case Call::domainData:
    case Call::domainProcess:
    case Call::domainQueue:
    case Call::receive:
    case Call::send:
    case Call::syncReferenceClock:
    case Call::syncSlaveClocks:
    case Call::referenceClockTime:
      return When::cycle;
    default:
      return When::any;
    }
  }
  bool takeOrder(Call call, int* result);
  void addOutOfOrder(Call call, bool active);
  void addLine(const std::string& line);

  std::array<std::uint64_t, CALL_KINDS> m_counts{};
  std::uint64_t m_armed = 0; // one bit per call with orders waiting
  static_assert(CALL_KINDS <= 64, "one bit each");
  std::array<std::deque<Order>, CALL_KINDS> m_orders;
  Misuse m_misuse;
  bool m_tracing = false;
  std::vector<TraceEntry> m_trace;
};

} // namespace ethercat_simulation

#endif
