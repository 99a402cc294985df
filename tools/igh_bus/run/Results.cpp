#include "run/Results.h"

#include "text/Text.h"

#include <cinttypes>
#include <cstdio>

namespace igh_bus {
namespace {

void printWatched(const RunOptions& options, const Session& session) {
  if (options.watches.empty())
    return;
  std::printf("\nWatched\n");
  for (std::size_t i = 0; i < options.watches.size(); ++i)
    std::printf("  %u:%s = %.10g\n", options.watches[i].slave, options.watches[i].entry.c_str(),
                session.watched(i));
}

void printErrors(const ErrorCounts& errors, const std::vector<SlaveError>& slaveErrors) {
  std::printf("\nErrors\n");
  bool any = false;
  for (std::size_t code = 1; code < errors.total.size(); ++code) {
    if (errors.total[code] == 0)
      continue;
    any = true;
    std::printf("  %-44s %" PRIu64 "\n", errorText(static_cast<int>(code)), errors.total[code]);
  }
  if (!any)
    std::printf("  none\n");
  for (const auto& [slave, code, count] : slaveErrors)
    std::printf("  %s: %s, %" PRIu64 " from cycle %" PRIu64 " to %" PRIu64 "\n", slave.c_str(),
                errorText(code), count.count, count.first, count.last);
}

} // namespace

void printProgress(const RunOptions& options, const Session& session, std::uint32_t state, bool terminal) {
  std::uint64_t errors = 0;
  for (const auto count : session.errors().total)
    errors += count;
  std::printf("%scycle %" PRIu64 " of %" PRIu64 "  %s  errors %" PRIu64, terminal ? "\r\033[K" : "",
              session.cycles(), options.cycles, stateText(state).c_str(), errors);
  for (std::size_t i = 0; i < options.watches.size(); ++i)
    std::printf("  %u:%s=%.10g", options.watches[i].slave, options.watches[i].entry.c_str(),
                session.watched(i));
  std::printf("%s", terminal ? "" : "\n");
  std::fflush(stdout);
}

void printTiming(const Session& session) {
  std::printf("Costs in us        cycle  receive    SDO  callback   send  total\n");
  static constexpr std::pair<const char*, COMM_DIAG_INDEX> ROWS[] = {
      {"fastest", COMM_DIAG_MIN}, {"last", COMM_DIAG_LAST}, {"slowest", COMM_DIAG_MAX}};
  for (const auto& [name, index] : ROWS) {
    const auto record = session.record(index);
    std::printf("  %-8s  %12" PRIu64 "  %7d  %5d  %8d  %5d  %5d\n", name, record.time,
                record.txPdoReceivedCostUs, record.sdoCostUs, record.userCallbackCostUs,
                record.rxPdoSentCostUs, record.totalExchangeCostUs);
  }
}

void printResults(const RunOptions& options, const Session& session, const Pacemaker& pacemaker,
                  const Climb& climb, const std::vector<SlaveError>& slaveErrors) {
  std::printf("%" PRIu64 " cycles, the callback ran in %" PRIu64 " of them\n", session.cycles(),
              session.callbacks());
  climb.print();
  printWatched(options, session);
  printErrors(session.errors(), slaveErrors);
  std::printf("\nCycles left out for late wake-ups: %" PRIu64 " (the latest %.1f us behind its time)\n",
              pacemaker.leftOut(), static_cast<double>(pacemaker.latestNs()) / 1e3);
  std::printf("\n");
  printTiming(session);
}

} // namespace igh_bus
