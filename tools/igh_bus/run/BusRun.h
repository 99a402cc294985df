// A bus from activation to the last cycle of a run.
#ifndef IGH_BUS_BUS_RUN_H
#define IGH_BUS_BUS_RUN_H

#include "bus/Session.h"
#include "host/RealTime.h"
#include "report/Recording.h"
#include "run/Climb.h"
#include "text/Failure.h"

#include <memory>

namespace igh_bus {

class BusRun {
public:
  // Activates, and makes the calling thread a real-time one. Throws Failure.
  explicit BusRun(const RunOptions& options);

  // All cycles, or those until a signal asks for the end.
  void cycle();

  // Why the run was no success; nothing when it was, or when a signal ended it.
  std::string verdict(bool processData) const;

  const Session& session() const { return m_session; }
  const Climb& climb() const { return m_climb; }
  const Pacemaker& pacemaker() const { return m_pacemaker; }
  const Recording& recording() const { return *m_recording; }

private:
  const RunOptions& m_options;
  Session m_session;
  Climb m_climb;
  std::unique_ptr<Recording> m_recording; // too large for a stack
  Pacemaker m_pacemaker;
};

// Says that a signal ended the run. Throws Failure(busError) for a verdict that is not empty.
Status endRun(const std::string& verdict);

} // namespace igh_bus

#endif
