#include "run/Results.h"

#include "bus/SlaveErrors.h"
#include "bus/SlaveList.h"
#include "scan/AlStatusCodes.h"
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

std::string stateOf(const SlaveSight& sight) {
  constexpr std::uint8_t STATE_BITS = 0x0F;
  return sight.alState == 0 ? "unknown" : slaveStateText(sight.alState & STATE_BITS);
}

void printErrors(const ErrorCounts& errors, const Sightings& sightings,
                 const std::vector<FoundSlave>& slaves) {
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
  printSightings(sightings, slaves);
  for (const auto& [slave, code, count] : slaveErrors(errors, slaves))
    std::printf("  %s: %s, %" PRIu64 " from cycle %" PRIu64 " to %" PRIu64 "\n", slave.c_str(),
                errorText(code), count.count, count.first, count.last);
}

} // namespace

void printSightings(const Sightings& sightings, const std::vector<FoundSlave>& slaves) {
  for (const auto& [cycle, slave, text] : sightings.seen)
    std::printf("  %s: %s (seen in cycle %" PRIu64 ")\n", slaveName(slave, slaves).c_str(), text.c_str(),
                cycle);
  if (sightings.further != 0)
    std::printf("  and %" PRIu64 " more changes of this kind\n", sightings.further);
}

std::vector<SlaveFacts::Seen> seenOf(std::size_t slave, const Sightings& sightings) {
  std::vector<SlaveFacts::Seen> list;
  for (const auto& sighting : sightings.seen) {
    if (sighting.slave == slave)
      list.push_back({sighting.cycle, sighting.text});
  }
  return list;
}

std::vector<SlaveFacts> slaveFacts(const Sightings& sightings, const ErrorCounts& errors,
                                   const std::vector<FoundSlave>& slaves) {
  std::vector<SlaveFacts> list;
  for (std::size_t slave = 0; slave < slaves.size(); ++slave) {
    const auto& info = slaves[slave].info;
    const auto& sight = sightings.slaves[slave];
    SlaveFacts facts{slave,
                     info.name,
                     info.alias,
                     stateOf(sight),
                     sight.alStatus,
                     sight.alState == 0 ? "unknown" : alStatusText(sight.alStatus),
                     sight.answers,
                     sight.lostPorts,
                     {},
                     seenOf(slave, sightings)};
    for (std::size_t code = 0; slave < errors.bySlave.size() && code < errors.bySlave[slave].size(); ++code) {
      if (errors.bySlave[slave][code].count != 0)
        facts.errors.push_back({static_cast<int>(code), errors.bySlave[slave][code]});
    }
    list.push_back(facts);
  }
  return list;
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
                  const Climb& climb, const Sightings& sightings, const std::vector<FoundSlave>& slaves) {
  std::printf("%" PRIu64 " cycles, the callback ran in %" PRIu64 " of them\n", session.cycles(),
              session.callbacks());
  climb.print();
  printWatched(options, session);
  printErrors(session.errors(), sightings, slaves);
  std::printf("\nCycles left out for late wake-ups: %" PRIu64 " (the latest %.1f us behind its time)\n",
              pacemaker.leftOut(), static_cast<double>(pacemaker.latestNs()) / 1e3);
  std::printf("\n");
  printTiming(session);
}

} // namespace igh_bus
