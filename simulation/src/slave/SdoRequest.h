// SDO requests of one slave configuration: the request as the application holds it, and the queue in which
// the slave's state machine finds it. Nothing here allocates after creation.
#ifndef ETHERCAT_SIMULATION_SDO_REQUEST_H
#define ETHERCAT_SIMULATION_SDO_REQUEST_H

#include "base/SimulatedTime.h"
#include "slave/ObjectDictionary.h"

#include <memory>

namespace ethercat_simulation {

class Master;
class SlaveConfiguration;
class SlaveUnit;

class SdoRequest {
public:
  SdoRequest(SlaveConfiguration& owner, const SdoPlace& place, std::size_t size);

  Master& master() const;
  // "0:1 0x6040:00", "0:1 0x6040:complete"
  std::string place() const;

  // The application's side.
  void setTimeout(std::uint32_t milliseconds) { m_timeout = milliseconds; }
  ec_request_state_t state();
  void start(bool read); // while busy: starts over, and is charged as misuse
  std::uint8_t* data() { return m_size == 0 ? nullptr : m_buffer.data(); }
  std::size_t dataSize() const { return m_dataSize; }

  // The slave's side.
  enum class Phase : std::uint8_t { unused, queued, running, success, error };
  bool is(Phase phase) const { return m_phase == phase; }
  bool isBusy() const { return is(Phase::queued) || is(Phase::running); }
  void run() { m_phase = Phase::running; }
  void fail() { m_phase = Phase::error; }
  // One more round without its turn; a counted cycle passes for 1 ms.
  void wait() { ++m_waited; }
  bool hasWaitedTooLong(bool inTime, Moment now) const;
  SdoFault fault(const ObjectDictionary& dictionary) const { return dictionary.fault(m_place); }
  void finish(ObjectDictionary& dictionary);

private:
  SlaveConfiguration& m_owner;
  SdoPlace m_place;
  std::size_t m_size;                 // as created
  std::size_t m_dataSize;             // as the last read left it
  std::vector<std::uint8_t> m_buffer; // the application's; its address never changes
  std::vector<std::uint8_t> m_kernel; // what travels
  std::size_t m_kernelSize = 0;
  Phase m_phase = Phase::unused;
  bool m_read = false;
  std::uint32_t m_timeout = 0;
  std::uint64_t m_waited = 0; // rounds
  Moment m_started = 0;
};

// What transfers take from their turn on.
struct SdoPace {
  Span answered;
  Span unanswered;
  bool isInTime() const { return answered.rounds == 0; }
};

// One transfer at a time, in order of creation.
class SdoQueue {
public:
  SdoRequest& add(SlaveConfiguration& owner, const SdoPlace& place, std::size_t size);
  // One round of the slave's state machine; null: the configuration is not attached.
  void step(SlaveUnit* unit, const SdoPace& pace, Moment now);
  bool isAnyBusy() const;

private:
  void failAll();
  void pick(const SlaveUnit& unit, const SdoPace& pace, Moment now);
  void progress(SlaveUnit& unit, Moment now);

  std::vector<std::unique_ptr<SdoRequest>> m_requests;
  SdoRequest* m_running = nullptr;
  Wait m_end;
};

} // namespace ethercat_simulation

#endif
