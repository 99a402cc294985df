// Deep idle states held off: while one process asks for it, no processor sleeps deeper than it can wake from
// in that time.
#ifndef IGH_BUS_IDLE_STATES_H
#define IGH_BUS_IDLE_STATES_H

#include <string>

namespace igh_bus {

class IdleStates {
public:
  static constexpr const char* REQUEST_FILE = "/dev/cpu_dma_latency";

  IdleStates() = default;
  ~IdleStates();
  IdleStates(const IdleStates&) = delete;
  IdleStates& operator=(const IdleStates&) = delete;

  // Asks for wake-ups without delay until the end of this object. Empty, or why not.
  std::string holdOff(const std::string& requestFile);

private:
  int m_request = -1; // the kernel drops the request when this closes
};

} // namespace igh_bus

#endif
