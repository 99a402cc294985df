#include "run/Lookout.h"

#include "bus/SlaveErrors.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cinttypes>
#include <thread>

namespace igh_bus {
namespace {

constexpr std::chrono::milliseconds TURN{10};
constexpr std::uint32_t OP = 8;

} // namespace

Lookout::Lookout(const RunOptions& options, const std::vector<FoundSlave>& slaves, const LookoutPlan& plan)
    : m_slaves(slaves), m_master(options.master), m_plan(plan), m_progress(options),
      m_told(slaves.size()), m_sightings{std::vector<SlaveSight>(slaves.size())},
      m_thread([this] { run(); }) {}

Lookout::~Lookout() {
  m_end.store(true, std::memory_order_release);
  m_thread.join();
}

void Lookout::note(const Session& session, std::uint32_t states) {
  m_cycle.store(session.cycles(), std::memory_order_relaxed);
  if (states == OP)
    m_seenOp.store(true, std::memory_order_relaxed);
  // A slave that leaves OP by itself is no error of the library's.
  m_changes += states != m_states && m_seenOp.load(std::memory_order_relaxed) ? 1 : 0;
  m_states = states;
  m_events.store(session.errors().sum() + m_changes, std::memory_order_release);
  m_progress.note(session, states);
}

Sightings Lookout::sightings() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_sightings;
}

std::string Lookout::troubles() const {
  constexpr std::size_t TOLD = 3;
  const auto sights = sightings().slaves;
  std::string text;
  std::size_t count = 0;
  const auto isUp = [](const SlaveSight& sight) { return sight.answers && !isBelowOp(sight); };
  const bool someUp = std::any_of(sights.begin(), sights.end(), isUp);
  std::size_t silent = 0;
  for (std::size_t slave = 0; slave < sights.size(); ++slave) {
    const auto& sight = sights[slave];
    silent += sight.answers ? 0 : 1;
    if ((isTroubled(sight) || (someUp && isBelowOp(sight))) && ++count <= TOLD)
      text += (count == 1 ? "" : "; ") + slaveName(slave, m_slaves) + ": " + sightText(sight);
  }
  if (silent == sights.size())
    return {};
  return text + (count > TOLD ? format("; and %zu more", count - TOLD) : "");
}

void Lookout::run() {
  open();
  while (!m_end.load(std::memory_order_acquire)) {
    const bool last = m_lastAsked.load(std::memory_order_acquire);
    tellProgress();
    if (!lastDone() && (last || isLookDue()))
      look(last);
    if (last && !lastDone()) {
      if (!m_line.empty())
        print("\r\033[K");
      m_lastDone.store(true, std::memory_order_release);
    }
    std::this_thread::sleep_for(TURN);
    ++m_turns;
  }
}

void Lookout::open() {
  try {
    m_look = std::make_unique<SlaveLook>(m_master, m_slaves);
  } catch (const Failure& failure) {
    const std::string reason = *failure.what() != '\0' ? failure.what() : "the master cannot be opened";
    print("The slaves are not looked at beside the run: " + reason + "\n");
  }
}

void Lookout::tellProgress() {
  const auto line = lastDone() ? std::nullopt : m_progress.line();
  if (!line)
    return;
  if (m_progress.isOver())
    m_line = *line;
  print(m_progress.isOver() ? "\r\033[K" + *line : *line + "\n");
}

bool Lookout::isLookDue() {
  constexpr unsigned int TURNS_BETWEEN = 20; // a look takes frames of the bus
  constexpr unsigned int TURNS_OF_TROUBLE = 50;
  const auto events = m_events.load(std::memory_order_acquire);
  const bool grown = events != m_eventsSeen && m_turns >= TURNS_BETWEEN;
  const bool periodic = m_plan.every.count() > 0 && m_turns * TURN >= m_plan.every;
  return grown || periodic || (m_trouble && m_turns >= TURNS_OF_TROUBLE);
}

void Lookout::look(bool last) {
  m_looking.store(true, std::memory_order_release);
  m_eventsSeen = m_events.load(std::memory_order_acquire);
  const auto cycle = m_cycle.load(std::memory_order_relaxed);
  // Not as it is behind the look, which may have begun in a climb.
  const bool climbed = m_seenOp.load(std::memory_order_relaxed);
  if (m_look)
    compare(m_look->take(), cycle, climbed, last);
  m_turns = 0;
  m_looking.store(false, std::memory_order_release);
}

// In a climb everybody is below OP, and so it is no news. It is none either at the end of a run in
// which nobody got there.
void Lookout::compare(const std::vector<SlaveSight>& sights, std::uint64_t cycle, bool climbed, bool last) {
  bool someUp = climbed;
  for (std::size_t slave = 0; last && slave < sights.size(); ++slave)
    someUp = someUp || (sights[slave].answers && !isBelowOp(sights[slave]));
  const bool silence = tellSilence(sights, cycle);
  m_trouble = silence;
  for (std::size_t slave = 0; !silence && slave < sights.size(); ++slave) {
    const bool troubled = isTroubled(sights[slave]) || (someUp && isBelowOp(sights[slave]));
    m_trouble = m_trouble || troubled;
    const auto text = troubled ? sightText(sights[slave]) : std::string();
    if (text == m_told[slave])
      continue;
    m_told[slave] = text;
    tell({cycle, slave, troubled ? text : sightText(sights[slave]) + " again"});
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_sightings.slaves = sights;
}

// One line instead of one for each slave.
bool Lookout::tellSilence(const std::vector<SlaveSight>& sights, std::uint64_t cycle) {
  const bool silence =
      std::none_of(sights.begin(), sights.end(), [](const auto& sight) { return sight.answers; });
  if (silence != m_silence)
    tell({cycle, ErrorCounts::WHOLE_MASTER, silence ? "no slave answers" : "slaves answer again"});
  m_silence = silence;
  return silence;
}

void Lookout::tell(const Sighting& sighting) {
  constexpr std::size_t MOST = 64;
  print((m_line.empty() ? "" : "\r\033[K") + format("cycle %" PRIu64 ": ", sighting.cycle) +
        slaveName(sighting.slave, m_slaves) + ": " + sighting.text + "\n" + m_line);
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_sightings.seen.size() < MOST)
    m_sightings.seen.push_back(sighting);
  else
    ++m_sightings.further;
}

void Lookout::print(const std::string& text) const {
  if (!m_plan.silent)
    m_stdout.writeInPassing(text);
}

} // namespace igh_bus
