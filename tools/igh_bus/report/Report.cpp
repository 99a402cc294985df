#include "report/Report.h"

#include "bus/ErrorCounts.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

Json histogramData(const Histogram& histogram) {
  Json classes = Json::array();
  const std::size_t end = histogram.samples() == 0 ? 0 : histogram.usedClasses();
  for (std::size_t place = 0; place < end; ++place) {
    if (histogram.count(place) != 0)
      classes.push_back({place, histogram.count(place)});
  }
  return {{"samples", histogram.samples()},
          {"min_us", histogram.minimumUs()},
          {"p50_us", histogram.percentileUs(0.5)},
          {"p99_us", histogram.percentileUs(0.99)},
          {"p99.9_us", histogram.percentileUs(0.999)},
          {"p99.99_us", histogram.percentileUs(0.9999)},
          {"max_us", histogram.maximumUs()},
          {"over_period", histogram.beyondLimit()},
          {"beyond_classes", histogram.beyond()},
          {"classes", classes}};
}

void write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw Failure(usageError, path + " cannot be written: " + std::strerror(errno));
}

} // namespace

Json reportData(const ReportFacts& facts, const Recording& recording) {
  Json data;
  data["run"] = {{"title", facts.title},
                 {"period_us", facts.periodUs},
                 {"cycles", facts.cycles},
                 {"mode", facts.mode},
                 {"distributed_clocks", facts.clocks},
                 {"cycles_left_out", facts.cyclesLeftOut},
                 {"real_time", facts.realTime},
                 {"success", facts.success},
                 {"verdict", facts.verdict}};
  const Host& host = facts.host;
  data["host"] = {{"kernel", host.kernel},
                  {"preemption", host.preemption},
                  {"governor", host.governor},
                  {"isolated_processors", host.isolated},
                  {"clock_source", host.clockSource},
                  {"scheduling", host.scheduling}};
  for (int phase = 0; phase < Recording::phases; ++phase) {
    const auto which = static_cast<Recording::Phase>(phase);
    Json& entry = data["phases"][Recording::name(which)];
    entry = histogramData(recording.histogram(which));
    entry["title"] = Recording::title(which);
  }
  data["clock"] = Json::array();
  for (std::size_t i = 0; i < recording.clockPoints(); ++i) {
    const ClockPoint& point = recording.clock()[i];
    data["clock"].push_back({{"cycle", point.cycle},
                             {"difference_ns", point.differenceNs},
                             {"min_ns", point.minimumNs},
                             {"max_ns", point.maximumNs},
                             {"offset_ns", point.offsetNs}});
  }
  data["states"] = Json::array();
  for (const StateChange& change : facts.states)
    data["states"].push_back({{"cycle", change.cycle}, {"states", change.states}});
  data["errors"] = Json::array();
  for (const ErrorSpan& span : recording)
    data["errors"].push_back({{"code", span.code},
                              {"text", errorText(span.code)},
                              {"first_cycle", span.first},
                              {"last_cycle", span.last},
                              {"count", span.count}});
  data["slave_errors"] = Json::array();
  for (const auto& [slave, code, count] : facts.slaveErrors)
    data["slave_errors"].push_back({{"slave", slave},
                                    {"code", code},
                                    {"text", errorText(code)},
                                    {"count", count.count},
                                    {"first_cycle", count.first},
                                    {"last_cycle", count.last}});
  data["errors_without_place"] = recording.lostErrors();
  return data;
}

void prepareReportFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error)
    throw Failure(usageError, folder + " cannot be made: " + error.message());
  write(folder + "/report.json", ""); // now, and not after an hour's run
}

void writeReport(const std::string& folder, const Json& data) {
  write(folder + "/report.json", data.dump(1) + "\n");
  write(folder + "/report.html", reportPage(data));
  std::printf("\nReport: %s/report.html\n", folder.c_str());
}

void printShortReport(const Recording& recording) {
  std::printf("\nTiming in us            min      p50      p99    p99.9   p99.99      max  > period\n");
  for (int phase = 0; phase < Recording::phases; ++phase) {
    const auto which = static_cast<Recording::Phase>(phase);
    const Histogram& histogram = recording.histogram(which);
    std::printf("  %-15s %9.1f %8.0f %8.0f %8.0f %8.0f %8.1f %9" PRIu64 "\n", Recording::title(which),
                histogram.minimumUs(), histogram.percentileUs(0.5), histogram.percentileUs(0.99),
                histogram.percentileUs(0.999), histogram.percentileUs(0.9999), histogram.maximumUs(),
                histogram.beyondLimit());
  }
}

} // namespace igh_bus
