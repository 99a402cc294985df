// A thread beside the cycle: it tells how the run goes on, and when errors come it looks which slave they are
// of, and why.
#ifndef IGH_BUS_LOOKOUT_H
#define IGH_BUS_LOOKOUT_H

#include "host/OrdinaryThread.h"
#include "run/Progress.h"
#include "run/SlaveLook.h"
#include "text/Redirection.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

namespace igh_bus {

struct Sighting {
  std::uint64_t cycle;
  std::size_t slave; // or ErrorCounts::WHOLE_MASTER
  std::string text;  // sightText(), or that the slave is well again
};

struct Sightings {
  std::vector<SlaveSight> slaves = {}; // of the latest look; as they are made, when there was none
  std::vector<Sighting> seen = {};     // in order: every change of a slave's trouble
  std::uint64_t further = 0;           // changes that found no place any more
};

struct LookoutPlan {
  bool silent = false;                // nothing is printed
  std::chrono::milliseconds every{0}; // looks also without errors; 0: only for errors and at the end
};

class Lookout {
public:
  // `slaves` must outlive it. A master that cannot be opened is told once, and the run goes on unseen.
  Lookout(const RunOptions& options, const std::vector<FoundSlave>& slaves, const LookoutPlan& plan = {});
  ~Lookout();
  Lookout(const Lookout&) = delete;
  Lookout& operator=(const Lookout&) = delete;

  // In the cycle: neither locks, allocates nor calls the system.
  void note(const Session& session, std::uint32_t states);
  void noteClock(const ClockPoint& point, std::uint32_t states) { m_progress.noteClock(point, states); }

  // Behind the last counted cycle: one more look, for which the bus must be cycled on, and nothing is printed
  // behind it.
  void askForLast() { m_lastAsked.store(true, std::memory_order_release); }
  bool lastDone() const { return m_lastDone.load(std::memory_order_acquire); }
  // It waits for the bus, or has begun to: not only for its turn of a processor.
  bool isLooking() const { return m_looking.load(std::memory_order_acquire); }

  // Of any thread but the cycle's.
  Sightings sightings() const;
  // What the latest look found amiss, for one line; nothing when all slaves are well, or none answers, and
  // nothing of one that is below OP only, as all others are.
  std::string troubles() const;

private:
  void run();
  void open();
  void tellProgress();
  bool isLookDue();
  void look(bool last);
  void compare(const std::vector<SlaveSight>& sights, std::uint64_t cycle, bool climbed, bool last);
  bool tellSilence(const std::vector<SlaveSight>& sights, std::uint64_t cycle);
  void tell(const Sighting& sighting);
  void print(const std::string& text) const;

  const std::vector<FoundSlave>& m_slaves;
  std::uint16_t m_master;
  LookoutPlan m_plan;
  KeptStdout m_stdout; // the scan of a run leads standard output away meanwhile

  // From the cycle.
  Progress m_progress;
  std::atomic<std::uint64_t> m_cycle{0};
  std::atomic<std::uint64_t> m_events{0}; // errors, and changes of the states since OP
  std::uint64_t m_changes = 0;
  std::uint32_t m_states = 0;
  std::atomic<bool> m_seenOp{false};
  std::atomic<bool> m_lastAsked{false};
  std::atomic<bool> m_end{false};

  // Of the thread.
  std::unique_ptr<SlaveLook> m_look;
  std::uint64_t m_eventsSeen = 0;
  unsigned int m_turns = 0; // since the latest look
  bool m_trouble = false;
  bool m_silence = false;          // of all slaves
  std::vector<std::string> m_told; // of each slave; empty for one that is well
  std::string m_line;              // on the terminal

  mutable std::mutex m_mutex; // of the sightings
  Sightings m_sightings;
  std::atomic<bool> m_lastDone{false};
  std::atomic<bool> m_looking{false};
  OrdinaryThread m_thread; // last: it uses all others
};

} // namespace igh_bus

#endif
