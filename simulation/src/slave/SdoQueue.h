// The SDO requests of one slave configuration, as the slave's state machine finds them.
#ifndef ETHERCAT_SIMULATION_SDO_QUEUE_H
#define ETHERCAT_SIMULATION_SDO_QUEUE_H

#include "slave/SdoRequest.h"

#include <memory>

namespace ethercat_simulation {

class SlaveUnit;

// What transfers take from their turn on.
struct SdoPace {
  Span answered;
  Span unanswered;
  bool isInTime() const { return answered.rounds == 0; }
};

// One transfer at a time, in order of creation.
class SdoQueue {
public:
  SdoRequest& add(const std::string& slave, const SdoPlace& place, std::size_t size);
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
