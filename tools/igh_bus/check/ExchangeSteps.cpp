#include "check/Steps.h"
#include "run/Verdict.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <cinttypes>

namespace igh_bus::check {
namespace {

constexpr std::uint64_t SAMPLE_CYCLES = 1000;

double secondsForOp(const CheckedBus& bus) {
  constexpr double FIRST = 10;
  constexpr double EACH_SLAVE = 0.5; // a drive with many entries
  return bus.options.climbSeconds.value_or(FIRST + EACH_SLAVE * static_cast<double>(bus.slaves.size()));
}

std::string climbText(const CheckedBus& bus, std::uint64_t cycles) {
  return format("OP after %" PRIu64 " cycles (%.2f s)", cycles,
                static_cast<double>(cycles) * bus.options.periodNs / 1e9);
}

[[noreturn]] void throwNoOp(const CheckedBus& bus, Bench& bench, Line& line) {
  line.details = bench.belowOp();
  throw Failure(busError, format("no lasting OP within %.1f s; the bus is in ", secondsForOp(bus)) +
                              stateText(bench.state()) + ", with " +
                              errorsText(bench.session().errors(), true));
}

std::string text(const CheckedBus& bus, const Measured& measured) {
  return format("%" PRIu64 " cycles, %" PRIu64 " in OP, %" PRIu64 " callbacks, ", measured.cycles,
                measured.inOp, measured.callbacks) +
         errorsText(measured.errors, true) +
         format(", %zu of %zu inputs changed", measured.changed.size(), bus.inputs.size());
}

// The costs and the wake-ups say why a frame came late.
void tellTiming(const Bench& bench, const Measured& measured, Line& line) {
  const auto slowest = bench.session().record(COMM_DIAG_MAX);
  line.details.push_back(format("slowest exchange since the activation %d us, %" PRIu64
                                " cycles left out for late wake-ups",
                                slowest.totalExchangeCostUs, measured.leftOut));
}

void judge(const CheckedBus& bus, Bench& bench, const Measured& measured, std::uint64_t wanted, Line& line) {
  tellTiming(bench, measured, line);
  if (measured.changed.empty() && !bus.inputs.empty())
    line.details.emplace_back("no input changed: only the working counter tells that data moves");
  line.judge(measured.clean() && measured.cycles == wanted, text(bus, measured));
}

} // namespace

void checkClimb(const CheckedBus& bus, Bench& bench, Line& line) {
  const auto cycles = bench.climb(secondsForOp(bus));
  if (!cycles)
    throwNoOp(bus, bench, line);
  line.judge(true, climbText(bus, *cycles));
}

void checkExchange(const CheckedBus& bus, Bench& bench, Line& line) {
  judge(bus, bench, bench.measure(SAMPLE_CYCLES), SAMPLE_CYCLES, line);
}

void checkWorkingCounter(const CheckedBus& bus, Bench& bench, Line& line) {
  judge(bus, bench, bench.measure(bus.options.cycles), bus.options.cycles, line);
}

void checkReactivation(const CheckedBus& bus, Bench& bench, Line& line) {
  const auto before = bench.measure(SAMPLE_CYCLES);
  bench.reactivate();
  const auto cycles = bench.climb(secondsForOp(bus));
  if (!cycles)
    throwNoOp(bus, bench, line);
  if (bus.inputs.empty() && !hasProcessData(bus.slaves)) {
    line.judge(true, climbText(bus, *cycles) + " again; there is no process data");
    return;
  }
  const auto after = bench.measure(SAMPLE_CYCLES);
  judge(bus, bench, after, SAMPLE_CYCLES, line);
  const bool stuck = after.changed.empty() && !before.changed.empty();
  line.judge(line.outcome == Outcome::passed && !stuck,
             climbText(bus, *cycles) + " again, then " + line.seen +
                 format(" (%zu in as many cycles before)", before.changed.size()));
}

} // namespace igh_bus::check
