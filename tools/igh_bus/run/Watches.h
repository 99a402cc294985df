// What is kept of the watched entries in each cycle.
#ifndef IGH_BUS_WATCHES_H
#define IGH_BUS_WATCHES_H

#include "bus/Session.h"
#include "bus/Survey.h"
#include "host/RealTime.h"
#include "record/Recorder.h"
#include "report/Plots.h"
#include "run/LiveValues.h"

#include <memory>
#include <optional>

namespace igh_bus {

class Watches {
public:
  // Allocates everything and opens the file. Throws Failure(usageError).
  explicit Watches(const RunOptions& options);

  // From now on the cycle also takes down what is shown of the run; `live` must outlive it.
  void show(LiveValues& live) { m_live = &live; }

  // In the cycle.
  void note(std::uint64_t cycle, std::uint32_t states, const Session& session, const Pacemaker& pacemaker);

  // Behind the last cycle: waits for the file. Nothing when none is written.
  std::optional<RecordResult> finish();
  // The key "plots" of the report: one for each watched entry.
  nlohmann::ordered_json plots(const std::vector<EntryAddress>& watches,
                               const std::vector<FoundSlave>& slaves);

private:
  std::vector<double> m_values;
  std::unique_ptr<Recorder> m_recorder;
  std::unique_ptr<Plots> m_plots;
  LiveValues* m_live = nullptr;
};

} // namespace igh_bus

#endif
