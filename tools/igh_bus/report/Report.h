// The report of a run: report.json with all numbers, report.html with the same numbers as pictures.
#ifndef IGH_BUS_REPORT_REPORT_H
#define IGH_BUS_REPORT_REPORT_H

#include "bus/SlaveErrors.h"
#include "host/Host.h"
#include "report/Recording.h"
#include "report/SlaveFacts.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace igh_bus {

struct StateChange {
  std::uint64_t cycle;
  std::string states;
};

struct ReportFacts {
  std::string title; // "master 0, 8 slaves, simulated"
  std::string mode;
  std::string clocks;
  std::string verdict;
  bool success;
  std::uint64_t errors; // that the verdict counts
  std::string realTime; // "yes", or why not
  double periodUs;
  std::uint64_t cycles;
  std::uint64_t cyclesLeftOut;
  std::vector<StateChange> states;
  std::vector<SlaveError> slaveErrors;
  Host host;
  std::vector<SlaveFacts> slaveFacts = {};
  std::string date = {};
  std::string commandLine = {};
  std::uint64_t statesWithoutPlace = 0;          // changes that are not among the states
  std::vector<SlaveFacts::Seen> masterSeen = {}; // of all slaves at once
};

// All numbers of the report; the page draws from nothing else.
nlohmann::ordered_json reportData(const ReportFacts& facts, const Recording& recording);
std::string reportPage(const nlohmann::ordered_json& data);

// Makes the folder if need be. Throws Failure(usageError) when it cannot be written to.
void prepareReportFolder(const std::string& folder);
void writeReport(const std::string& folder, const nlohmann::ordered_json& data);

// A line for each phase.
void printShortReport(const Recording& recording);

} // namespace igh_bus

#endif
