// What a run shows: progress on a terminal, and everything at the end.
#ifndef IGH_BUS_RESULTS_H
#define IGH_BUS_RESULTS_H

#include "bus/Session.h"
#include "bus/SlaveErrors.h"
#include "host/RealTime.h"
#include "run/Climb.h"

namespace igh_bus {

// One line with the watched values; on a terminal over the previous one.
void printProgress(const RunOptions& options, const Session& session, std::uint32_t state, bool terminal);

// The fastest, the last and the slowest cycle since activation.
void printTiming(const Session& session);

void printResults(const RunOptions& options, const Session& session, const Pacemaker& pacemaker,
                  const Climb& climb, const std::vector<SlaveError>& slaveErrors);

} // namespace igh_bus

#endif
