#include "check/Check.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <cinttypes>

namespace igh_bus::check {
namespace {

constexpr const char* NO_OP = "OP was not reached";
constexpr const char* ENDED = "ended by a signal";

} // namespace

const std::vector<Line>& Check::run() {
  Counters counters;
  add("scan", "the library finds the slaves of the master, each with its description", "",
      [&](Line& line) { checkScan(m_bus, line); });
  add("registers", "registers of every slave can be read, and its error counters cleared", "",
      [&](Line& line) { checkRegisters(m_bus, counters, line); });
  normalMode();
  exchangeMode();
  following();
  add("error counters", "no slave has counted an error since they were cleared",
      counters.empty() ? "no counters could be read at the start" : "",
      [&](Line& line) { checkCounters(m_bus, counters, line); });
  linePull();
  return m_lines;
}

bool Check::add(const char* step, const std::string& promised, const std::string& skip,
                const std::function<void(Line&)>& work) {
  Line line{step, promised, Outcome::failed, "", {}};
  try {
    if (!StopSignals::requested() && skip.empty())
      work(line);
    else
      line.skip(skip.empty() ? ENDED : skip);
  } catch (const Failure& failure) {
    line.judge(false, *failure.what() ? failure.what() : "failed; the reason is on standard error");
  }
  if (StopSignals::requested() && line.outcome == Outcome::failed)
    line.skip(ENDED); // what was seen until then is no fault of the bus
  m_lines.push_back(line);
  m_tell(m_lines.back());
  return line.outcome == Outcome::passed;
}

std::unique_ptr<Bench> Check::climb(const std::string& step, const BenchMode& mode,
                                    const std::function<void()>& prepare) {
  std::unique_ptr<Bench> bench;
  const bool reached = add(step.c_str(), "all slaves reach OP and stay there", m_whyNot, [&](Line& line) {
    bench = std::make_unique<Bench>(m_bus, mode, prepare);
    checkClimb(m_bus, *bench, line);
  });
  if (!reached) {
    bench.reset();
    m_whyNot = NO_OP;
  }
  return bench;
}

std::string Check::noProcessData() const {
  return m_processData ? "" : "no slave has described process data";
}

std::string Check::noClocks() const {
  if (m_bus.options.withoutClocks)
    return "--no-dc";
  return m_bus.withClocks.empty() ? "no slave has a description with a clock mode \"DC\"" : "";
}

void Check::normalMode() {
  IdentityCheck identity(m_bus);
  const auto bench = climb("OP, normal mode", {false, false}, [&] { identity.createRequests(); });
  const auto unless = [&](const std::string& reason) { return bench ? reason : NO_OP; };
  add("exchange, normal mode", "in OP the callback runs once in each cycle, without errors",
      unless(noProcessData()), [&](Line& line) { checkExchange(m_bus, *bench, line); });
  add("working counter", format("it is complete over %" PRIu64 " cycles", m_bus.options.cycles),
      unless(noProcessData()), [&](Line& line) { checkWorkingCounter(m_bus, *bench, line); });
  add("SDO 0x1018", "requests beside the process data read what the scan found",
      unless(m_bus.withObjects.empty() ? "no described slave has a mailbox with objects" : ""),
      [&](Line& line) { identity.check(*bench, line); });
  add("clocks, master leads",
      format("the slaves' clocks show the master's time, within %.3f us", m_bus.clockBoundNs() / 1e3),
      unless(noClocks()), [&](Line& line) { checkLeading(m_bus, *bench, line); });
  add("re-activation", "deactivated and activated again, the bus is in OP again and data moves", unless(""),
      [&](Line& line) { checkReactivation(m_bus, *bench, line); });
}

void Check::exchangeMode() {
  const auto bench = climb("OP, exchange mode", {true, false});
  add("exchange, exchange mode", "the callback runs in each cycle, once the frame of that cycle is back",
      bench ? noProcessData() : NO_OP, [&](Line& line) { checkExchange(m_bus, *bench, line); });
}

void Check::following() {
  std::unique_ptr<Bench> bench;
  if (noClocks().empty())
    bench = climb("OP, master follows", {false, true});
  add("clocks, master follows",
      format("the master's time meets the reference clock within %" PRIu64
             " cycles and stays there: every difference within %.3f us, at rest within %.3f us",
             m_bus.options.clockCycles, m_bus.clockBoundNs() / 1e3, m_bus.clockBoundNs() / 1e4),
      !noClocks().empty() ? noClocks()
      : bench             ? ""
                          : NO_OP,
      [&](Line& line) { checkFollowing(m_bus, *bench, line); });
}

void Check::linePull() {
  std::unique_ptr<Bench> bench;
  if (m_bus.options.linePull)
    bench = climb("OP, before the line is pulled", {false, false});
  add("line pulled", "errors tell of it, and the bus is in OP again by itself",
      !m_bus.options.linePull ? "not asked for (--line-pull)"
      : bench                 ? ""
                              : NO_OP,
      [&](Line& line) { checkLinePull(m_bus, *bench, line); });
}

} // namespace igh_bus::check
