// What a run shows at its end.
#ifndef IGH_BUS_RESULTS_H
#define IGH_BUS_RESULTS_H

#include "bus/Session.h"
#include "bus/SlaveErrors.h"
#include "host/RealTime.h"
#include "report/SlaveFacts.h"
#include "run/Climb.h"
#include "run/Lookout.h"

namespace igh_bus {

// "slave 5 (EM500 servo drive X): SAFEOP, AL status 0x001B: process data watchdog (seen in cycle 512)"
void printSightings(const Sightings& sightings, const std::vector<FoundSlave>& slaves);

// What was seen of one slave, or of ErrorCounts::WHOLE_MASTER.
std::vector<SlaveFacts::Seen> seenOf(std::size_t slave, const Sightings& sightings);

// Which errors each slave had, and what was seen of it.
std::vector<SlaveFacts> slaveFacts(const Sightings& sightings, const ErrorCounts& errors,
                                   const std::vector<FoundSlave>& slaves);

// The fastest, the last and the slowest cycle since activation.
void printTiming(const Session& session);

void printResults(const RunOptions& options, const Session& session, const Pacemaker& pacemaker,
                  const Climb& climb, const Sightings& sightings, const std::vector<FoundSlave>& slaves);

} // namespace igh_bus

#endif
