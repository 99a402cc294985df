#include "bus/SlaveErrors.h"
#include "check/Steps.h"
#include "run/Verdict.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <cinttypes>
#include <cstdio>

namespace igh_bus::check {
namespace {

constexpr std::uint32_t OP = 8;

// On standard error, which nobody redirects here.
void ask(const char* wish) {
  std::fprintf(stderr, "%s\n", wish);
}

// A late frame or two is no pulled line.
bool inTrouble(const Bench& bench, std::uint64_t errorsBefore) {
  constexpr std::uint64_t LASTING_CYCLES = 20;
  const auto& errors = bench.session().errors();
  return bench.state() != OP || errors.lasting(1, LASTING_CYCLES) ||
         errors.sum() - errors.total[1] != errorsBefore;
}

bool waitForTrouble(const CheckedBus& bus, Bench& bench) {
  const auto& errors = bench.session().errors();
  const auto before = errors.sum() - errors.total[1];
  for (auto left = bus.cyclesOf(bus.options.lineSeconds); left > 0 && bench.step(); --left) {
    if (inTrouble(bench, before))
      return true;
  }
  return false;
}

} // namespace

void checkLinePull(const CheckedBus& bus, Bench& bench, Line& line) {
  constexpr std::uint64_t SAMPLE_CYCLES = 1000;
  ask("Pull a line of the bus now.");
  if (!waitForTrouble(bus, bench))
    throw Failure(busError, format("no error and no other state within %.0f s: was a line pulled?",
                                   bus.options.lineSeconds));
  const auto pulled = bench.session().cycles();
  ask("Seen. Put it back.");
  const auto back = bench.climb(bus.options.lineSeconds);
  for (const auto& [slave, code, count] : slaveErrors(bench.session().errors(), bus.slaves))
    line.details.push_back(
        slave + ": " + errorText(code) +
        format(", %" PRIu64 " from cycle %" PRIu64 " to %" PRIu64, count.count, count.first, count.last));
  const auto errors = errorsText(bench.session().errors(), true);
  if (!back) {
    for (const auto& slave : bench.belowOp())
      line.details.push_back(slave);
    throw Failure(busError, errors + ", and no OP again within " + format("%.0f s", bus.options.lineSeconds));
  }
  const auto after = bench.measure(SAMPLE_CYCLES);
  line.judge(
      after.clean() && bench.session().errors().sum() != 0,
      format("trouble in cycle %" PRIu64 ", OP again from cycle %" PRIu64 " on, with ", pulled, *back) +
          errors + format("; then %" PRIu64 " cycles with ", after.cycles) + errorsText(after.errors, true));
}

} // namespace igh_bus::check
