// A bus from activation to the last cycle of a run.
#ifndef IGH_BUS_BUS_RUN_H
#define IGH_BUS_BUS_RUN_H

#include "bus/Session.h"
#include "host/RealTime.h"
#include "report/Recording.h"
#include "run/Climb.h"
#include "run/Lookout.h"
#include "run/Verdict.h"
#include "run/Watches.h"
#include "text/Failure.h"

#include <memory>

namespace igh_bus {

class BusRun {
public:
  // Activates, and locks the memory of a real-time thread. The lookout, if there is one, must outlive it.
  // Throws Failure.
  BusRun(const RunOptions& options, RealTime& realTime, Lookout* lookout = nullptr);

  // All cycles, or those until a signal asks for the end.
  void cycle();

  Verdict verdict(bool processData) const;

  const Session& session() const { return m_session; }
  const Climb& climb() const { return m_climb; }
  const Pacemaker& pacemaker() const { return m_pacemaker; }
  const Recording& recording() const { return *m_recording; }
  Watches& watches() { return m_watches; }

private:
  void cycleOnForLookout();

  const RunOptions& m_options;
  Lookout* m_lookout;
  Watches m_watches; // before the bus: it may fail, and it takes its time
  Session m_session;
  Climb m_climb;
  std::unique_ptr<Recording> m_recording; // too large for a stack
  Pacemaker m_pacemaker;
};

// Before the bus is taken: says why the run will not be a real-time one, or refuses it. Throws
// Failure(busError).
void sayRealTime(const Limits& limits, const RealTime& realTime);

// The last lines. Throws Failure(busError) for a run that was no success.
Status endRun(const Verdict& verdict, const RealTime& realTime);

} // namespace igh_bus

#endif
