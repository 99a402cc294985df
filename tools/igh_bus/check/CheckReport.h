// A check as a text and as JSON, with what must be known of the machine that it ran on.
#ifndef IGH_BUS_CHECK_CHECK_REPORT_H
#define IGH_BUS_CHECK_CHECK_REPORT_H

#include "check/CheckedBus.h"
#include "check/Line.h"
#include "host/Doctor.h"

#include <nlohmann/json.hpp>

namespace igh_bus::check {

struct CheckFacts {
  std::string date;
  std::string commandLine;
  std::string bus;    // "master 0: 8 slaves (simulated bus)"
  std::string period; // "1000 us"
  std::string tool;
  std::string library; // the file that is loaded, with its version in its name
  std::string realTime;
  std::vector<Finding> machine; // kernel, release of the master and the like
};

CheckFacts collectCheckFacts(const CheckedBus& bus);

std::string headText(const CheckFacts& facts);
std::string lineText(const Line& line);
// "12 passed, 1 failed, 2 skipped"
std::string sumText(const std::vector<Line>& lines);
nlohmann::ordered_json checkJson(const CheckFacts& facts, const std::vector<Line>& lines);

} // namespace igh_bus::check

#endif
