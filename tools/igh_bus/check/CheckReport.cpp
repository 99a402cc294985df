#include "check/CheckReport.h"

#include "text/Text.h"

#include <algorithm>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <igh_master.h>

namespace igh_bus::check {
namespace {

using Json = nlohmann::ordered_json;

const char* word(Outcome outcome) {
  static constexpr const char* WORDS[] = {"passed", "FAILED", "skipped"};
  return WORDS[static_cast<int>(outcome)];
}

std::string now() {
  const std::time_t time = std::time(nullptr);
  std::tm local{};
  localtime_r(&time, &local);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local);
  return text;
}

std::string libraryFile() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&igh_master_initialize), &info) == 0 || !info.dli_fname)
    return "unknown";
  std::error_code error;
  const auto path = std::filesystem::canonical(info.dli_fname, error);
  return error ? info.dli_fname : path.string();
}

std::string levelText(const Finding& finding) {
  static constexpr const char* LEVELS[] = {"", "", "warning: ", "failure: "};
  return LEVELS[finding.level] + finding.is;
}

std::string row(const std::string& name, const std::string& text) {
  return format("  %-22s %s\n", name.c_str(), text.c_str());
}

} // namespace

CheckFacts collectCheckFacts(const CheckedBus& bus) {
  const auto& options = bus.options;
  return {now(),
          options.commandLine,
          format("master %u: %zu slaves%s", unsigned{options.master}, bus.slaves.size(),
                 IGH_BUS_SIMULATED ? " (simulated bus)" : ""),
          format("%.10g us", options.periodNs / 1e3),
          "igh_bus " IGH_BUS_VERSION,
          libraryFile(),
          bus.realTime.missing().empty() ? "yes" : "no: " + bus.realTime.missing(),
          diagnose({Machine(""), thisBuild(), options.master})};
}

std::string headText(const CheckFacts& facts) {
  std::string text = "Check of " + facts.bus + "\nPeriod " + facts.period + ", all outputs at 0\n" +
                     row("date", facts.date) + row("command", facts.commandLine) + row("tool", facts.tool) +
                     row("library", facts.library) + row("real time", facts.realTime);
  for (const auto& finding : facts.machine)
    text += row(finding.topic.subject, levelText(finding));
  return text + "\n";
}

std::string lineText(const Line& line) {
  std::string text = format("%-7s  %s\n", word(line.outcome), line.step.c_str()) +
                     "         promised: " + line.promised + "\n" +
                     (line.outcome == Outcome::skipped ? "         because:  " : "         seen:     ") +
                     line.seen + "\n";
  for (const auto& detail : line.details)
    text += "           " + detail + "\n";
  return text;
}

std::string sumText(const std::vector<Line>& lines) {
  const auto count = [&](Outcome outcome) {
    return std::count_if(lines.begin(), lines.end(),
                         [&](const Line& line) { return line.outcome == outcome; });
  };
  return format("%td passed, %td failed, %td skipped", count(Outcome::passed), count(Outcome::failed),
                count(Outcome::skipped));
}

Json checkJson(const CheckFacts& facts, const std::vector<Line>& lines) {
  Json machine = Json::array();
  for (const auto& finding : facts.machine)
    machine.push_back({{"id", finding.topic.id}, {"is", levelText(finding)}});
  Json list = Json::array();
  for (const auto& line : lines)
    list.push_back({{"step", line.step},
                    {"promised", line.promised},
                    {"outcome", line.outcome == Outcome::failed ? "failed" : word(line.outcome)},
                    {"seen", line.seen},
                    {"details", line.details}});
  return {{"date", facts.date},
          {"command", facts.commandLine},
          {"bus", facts.bus},
          {"period", facts.period},
          {"simulated", IGH_BUS_SIMULATED != 0},
          {"tool", facts.tool},
          {"library", facts.library},
          {"real_time", facts.realTime},
          {"machine", machine},
          {"lines", list},
          {"sum", sumText(lines)}};
}

} // namespace igh_bus::check
