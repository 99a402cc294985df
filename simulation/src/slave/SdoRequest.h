// An SDO request as the application holds it and as the slave serves it. Nothing here allocates after
// creation.
#ifndef ETHERCAT_SIMULATION_SDO_REQUEST_H
#define ETHERCAT_SIMULATION_SDO_REQUEST_H

#include "base/SimulatedTime.h"
#include "slave/ObjectDictionary.h"

namespace ethercat_simulation {

class SdoRequest {
public:
  // `slave` names the slave: "0:1".
  SdoRequest(std::string slave, const SdoPlace& place, std::size_t size);

  // "0:1 0x6040:00", "0:1 0x6040:complete"
  std::string place() const;

  // The application's side.
  void setTimeout(std::uint32_t milliseconds) { m_timeout = milliseconds; }
  ec_request_state_t state();
  void start(bool read, Moment now); // starts over while busy
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
  std::string m_slave;
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

} // namespace ethercat_simulation

#endif
