// igh_bus run and diag: the whole order, from description files to process data moving on the bus.
#include "bus/Bus.h"
#include "bus/Session.h"
#include "descriptions/Descriptions.h"
#include "host/RealTime.h"
#include "report/Report.h"
#include "run/ReferenceClock.h"
#include "run/Results.h"
#include "text/Text.h"

#include <cstdio>
#include <memory>
#include <unistd.h>

namespace igh_bus {
namespace {

// The library would take an input's name for an output, or an entry that it cannot convert, in silence.
const Entry& checkedEntry(const EntryAddress& address, bool write, const std::vector<FoundSlave>& slaves) {
  checkSlave(address.slave, slaves);
  const auto* device = slaves[address.slave].device;
  if (!device)
    throw Failure(usageError, format("slave %u has no description and therefore no entries", address.slave));
  const auto [entry, output] = findEntry(*device, address.entry);
  const std::string name =
      format("entry \"%s\" of slave %u (%s)", address.entry.c_str(), address.slave, device->typeName.c_str());
  if (!entry)
    throw Failure(usageError, "there is no " + name + "; igh_bus describe lists the names");
  if (convertedBytes(entry->type) == 0)
    throw Failure(usageError, name + " has type " + entry->type + ", which cannot be converted");
  if (write && !output)
    throw Failure(usageError, name + " is an input and cannot be set");
  return *entry;
}

void checkEntries(const RunOptions& options, const std::vector<FoundSlave>& slaves) {
  for (const auto& watch : options.watches)
    checkedEntry(watch, false, slaves);
  for (const auto& setting : options.settings)
    checkedEntry(setting.address, true, slaves);
}

const char* modeText(const RunOptions& options) {
  return options.exchangeMode ? "exchange mode (send, then wait for the frame)"
                              : "normal mode (receive, then send)";
}

const char* clocksText(const RunOptions& options) {
  if (options.withoutClocks)
    return "off";
  return options.followReference ? "where described, following the reference clock" : "where described";
}

std::string busText(const RunOptions& options, std::size_t slaves) {
  return format("Master %u: %zu slaves%s", unsigned{options.master}, slaves,
                IGH_BUS_SIMULATED ? " (simulated bus)" : "");
}

void printPlan(const RunOptions& options, const std::vector<FoundSlave>& slaves) {
  std::size_t matched = 0;
  for (const auto& slave : slaves)
    matched += slave.device ? 1 : 0;
  std::printf("Master %u: %zu slaves, %zu with a description%s\n", unsigned{options.master}, slaves.size(),
              matched, IGH_BUS_SIMULATED ? " (simulated bus)" : "");
  printSlaves(slaves);
  std::printf("\nPeriod %.10g us, %s, distributed clocks %s\n", options.periodNs / 1e3, modeText(options),
              clocksText(options));
  std::fflush(stdout);
}

void loop(const RunOptions& options, Session& session, Pacemaker& pacemaker, Climb& climb,
          Recording& recording) {
  const bool terminal = isatty(STDOUT_FILENO) != 0 && !options.followReference;
  std::optional<ReferenceFollower> follower;
  if (options.followReference)
    follower.emplace(options.periodNs);
  const std::uint64_t cyclesPerSecond = (1000000000 + options.periodNs - 1) / options.periodNs;
  while (session.cycles() < options.cycles && pacemaker.wait()) {
    const auto cycle = session.cycles();
    climb.note(cycle, session.exchange());
    recording.note(pacemaker.latencyNs(), session.record(COMM_DIAG_LAST));
    recording.noteErrors(cycle, session.errors().total);
    if (follower)
      follower->step(session, climb.state(), pacemaker, recording);
    if (terminal && session.cycles() % cyclesPerSecond == 0)
      printProgress(options, session, climb.state());
  }
  if (terminal)
    std::printf("\r\033[K");
}

bool hasProcessData(const std::vector<FoundSlave>& slaves) {
  for (const auto& slave : slaves) {
    if (slave.device && slave.device->entryCount() != 0)
      return true;
  }
  return false;
}

// Nothing when the run was a success, else why it was not.
std::string judge(const Session& session, const Climb& climb, bool processData) {
  constexpr std::uint32_t OP = 8;
  constexpr std::uint64_t LASTING = 3; // single late frames happen on healthy buses
  if (!climb.seen(OP))
    return "the bus never reached OP; it ended in " + stateText(climb.state());
  if (climb.state() != OP)
    return "the bus left OP; it ended in " + stateText(climb.state());
  for (const int code :
       {ETHERCAT_ERROR_WORKING_COUNTER, ETHERCAT_ERROR_LINK_DOWN, ETHERCAT_ERROR_SLAVE_STATE}) {
    if (code == ETHERCAT_ERROR_WORKING_COUNTER && !processData)
      continue; // raised in every cycle of a bus without process data
    if (session.errors().lasting(code, LASTING))
      return std::string("at the end of the run: ") + errorText(code);
  }
  return {};
}

} // namespace

Status run(const RunOptions& options) {
  const StopSignals signals;
  const auto devices = loadDevices(options.descriptions);
  const BusChoice bus(options, devices);
  const auto slaves = surveyBus(options, devices);
  checkSize(slaves);
  checkEntries(options, slaves);
  if (!options.timingOnly)
    printPlan(options, slaves);
  if (!options.reportFolder.empty())
    prepareReportFolder(options.reportFolder);

  Session session(options);
  Climb climb;
  becomeRealTime(options.priority, options.cpu);
  const auto recording = std::make_unique<Recording>(options.periodNs);
  Pacemaker pacemaker(options.periodNs);
  loop(options, session, pacemaker, climb, *recording);

  const bool processData = hasProcessData(slaves);
  if (options.timingOnly) {
    printTiming(session);
  } else {
    printResults(options, session, pacemaker, climb);
    printShortReport(*recording);
  }
  if (!processData && !options.timingOnly)
    std::printf(
        "\nNo slave has process data: the working counter counts as incomplete in every cycle in OP.\n");
  const auto reason = StopSignals::requested() ? "" : judge(session, climb, processData);
  if (!options.reportFolder.empty()) {
    const ReportFacts facts{busText(options, slaves.size()),
                            modeText(options),
                            clocksText(options),
                            reason.empty() ? "success" : reason,
                            options.periodNs / 1e3,
                            session.cycles(),
                            pacemaker.leftOut(),
                            climb.changes(),
                            inspectHost()};
    writeReport(options.reportFolder, reportData(facts, *recording));
  }
  if (StopSignals::requested())
    std::printf("\nEnded by a signal.\n");
  if (!reason.empty())
    throw Failure(busError, reason);
  return success;
}

} // namespace igh_bus
