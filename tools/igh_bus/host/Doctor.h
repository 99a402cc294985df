// Whether this machine is ready to run a bus: facts, and what they mean.
#ifndef IGH_BUS_DOCTOR_H
#define IGH_BUS_DOCTOR_H

#include "host/Host.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace igh_bus {

struct Facts {
  bool simulated = false;
  std::uint32_t headerVersion = 0; // that this program was built with
  std::uint32_t libraryVersion = 0;
  std::string device;  // path of the device node
  int deviceError = 0; // errno of opening it for writing, 0 when it opened
  std::optional<std::uint32_t> ioctlMagic;
  std::uint64_t lockableBytes = 0; // ~0: no limit
  std::uint64_t rtPriority = 0;    // highest that may be asked for
  Host host;
};

struct Finding {
  enum Level { ok, warning, failure } level;
  std::string subject;
  std::string text;
  std::string remedy; // empty when all is well
};

Facts collectFacts(unsigned int master);
std::vector<Finding> diagnose(const Facts& facts);

} // namespace igh_bus

#endif
