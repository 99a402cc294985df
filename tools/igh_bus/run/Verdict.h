// What is to be thought of a run.
#ifndef IGH_BUS_VERDICT_H
#define IGH_BUS_VERDICT_H

#include "bus/ErrorCounts.h"
#include "bus/Options.h"

#include <string>

namespace igh_bus {

struct RunFacts {
  std::uint32_t states = 0; // of the slaves at the end, ORed
  bool seenOp = false;
  bool bySignal = false;   // ended by one: then the bus may be in any state
  bool byKey = false;      // the same, but by a key
  bool processData = true; // a bus without any raises error 1 in every cycle
  ErrorCounts errors;
  std::string troubles; // of the slaves at the end: "slave 6 (EM500 servo drive Y): does not answer"
  double latestNs = 0;  // the worst wake-up
  std::uint64_t missed = 0;
};

struct Verdict {
  bool success;
  std::string text;         // "in OP at the end, without errors"; why, for a run that was no success
  std::uint64_t errors = 0; // that count
};

Verdict judge(const RunFacts& facts, const Limits& limits);

// "291 errors (working counter incomplete 280, link down 11)"; "no errors".
std::string errorsText(const ErrorCounts& errors, bool processData);

} // namespace igh_bus

#endif
