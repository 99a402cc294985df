#include "report/Report.h"

#include "bus/ErrorCounts.h"

#include <algorithm>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

Json runData(const ReportFacts& facts) {
  return {{"title", facts.title},
          {"period_us", facts.periodUs},
          {"cycles", facts.cycles},
          {"mode", facts.mode},
          {"distributed_clocks", facts.clocks},
          {"cycles_left_out", facts.cyclesLeftOut},
          {"real_time", facts.realTime},
          {"success", facts.success},
          {"errors", facts.errors},
          {"verdict", facts.verdict},
          {"date", facts.date},
          {"version", "igh_bus " IGH_BUS_VERSION},
          {"command_line", facts.commandLine}};
}

Json hostData(const Host& host) {
  return {{"name", host.name},
          {"processor", host.processor},
          {"kernel", host.kernel},
          {"preemption", host.preemption},
          {"governor", host.governor},
          {"isolated_processors", host.isolated},
          {"clock_source", host.clockSource},
          {"scheduling", host.scheduling}};
}

// What is told first.
Json summaryData(const ReportFacts& facts, const Histogram& wakeUp) {
  Json errors = Json::array();
  for (const auto& [slave, code, count] : facts.slaveErrors) {
    if (errors.empty() || errors.back().at("slave") != slave)
      errors.push_back({{"slave", slave}, {"count", 0}});
    errors.back()["count"] = errors.back().at("count").get<std::uint64_t>() + count.count;
  }
  std::stable_sort(errors.begin(), errors.end(), [](const Json& left, const Json& right) {
    return left.at("count").get<std::uint64_t>() > right.at("count").get<std::uint64_t>();
  });
  return {{"worst_wake_up_us", wakeUp.maximumUs()},
          {"worst_wake_up_cycle", wakeUp.maximumSample()},
          {"worst_wake_up_after_s", static_cast<double>(wakeUp.maximumSample()) * facts.periodUs / 1e6},
          {"p99.99_us", wakeUp.percentileUs(0.9999)},
          {"errors_by_slave", errors}};
}

Json histogramData(const Histogram& histogram) {
  Json classes = Json::array();
  const std::size_t end = histogram.samples() == 0 ? 0 : histogram.usedClasses();
  for (std::size_t place = 0; place < end; ++place) {
    if (histogram.count(place) != 0)
      classes.push_back({place, histogram.count(place)});
  }
  return {{"samples", histogram.samples()},
          {"min_us", histogram.minimumUs()},
          {"mean_us", histogram.meanUs()},
          {"p50_us", histogram.percentileUs(0.5)},
          {"p99_us", histogram.percentileUs(0.99)},
          {"p99.9_us", histogram.percentileUs(0.999)},
          {"p99.99_us", histogram.percentileUs(0.9999)},
          {"max_us", histogram.maximumUs()},
          {"max_cycle", histogram.maximumSample()},
          {"over_period", histogram.beyondLimit()},
          {"beyond_classes", histogram.beyond()},
          {"classes", classes}};
}

Json phaseData(const Recording& recording) {
  Json phases;
  for (int phase = 0; phase < Recording::phases; ++phase) {
    const auto which = static_cast<Recording::Phase>(phase);
    Json& entry = phases[Recording::name(which)];
    entry = histogramData(recording.histogram(which));
    entry["title"] = Recording::title(which);
  }
  return phases;
}

constexpr std::pair<const char*, Costs::Part> PARTS[] = {{"receive", Costs::receive},
                                                         {"sdo", Costs::sdo},
                                                         {"callback", Costs::callback},
                                                         {"send", Costs::send},
                                                         {"total", Costs::total}};

// Columns, one number for each interval.
Json courseData(const Course& course) {
  Json data = {{"cycles_per_interval", course.cyclesPerInterval()},
               {"cycles", Json::array()},
               {"latency_min_us", Json::array()},
               {"latency_median_us", Json::array()},
               {"latency_max_us", Json::array()},
               {"latency_max_cycle", Json::array()}};
  for (const auto& [name, part] : PARTS)
    data["mean_us"][name] = Json::array();
  data["total_max_us"] = Json::array();
  for (const Interval& interval : course) {
    data["cycles"].push_back(interval.first);
    data["latency_min_us"].push_back(static_cast<double>(interval.minimumNs) / 1e3);
    data["latency_median_us"].push_back(static_cast<double>(interval.medianNs()) / 1e3);
    data["latency_max_us"].push_back(static_cast<double>(interval.maximumNs) / 1e3);
    data["latency_max_cycle"].push_back(interval.maximumCycle);
    for (const auto& [name, part] : PARTS)
      data["mean_us"][name].push_back(interval.meanUs(part));
    data["total_max_us"].push_back(interval.longestUs);
  }
  return data;
}

Json slowestData(const Course& course) {
  Json data;
  data["cycle"] = course.slowestCycle();
  for (const auto& [name, part] : PARTS)
    data[std::string(name) + "_us"] = course.slowest().us[part];
  return data;
}

Json clockData(const Recording& recording) {
  Json points = Json::array();
  for (std::size_t i = 0; i < recording.clockPoints(); ++i) {
    const ClockPoint& point = recording.clock()[i];
    points.push_back({{"cycle", point.cycle},
                      {"difference_ns", point.differenceNs},
                      {"min_ns", point.minimumNs},
                      {"max_ns", point.maximumNs},
                      {"offset_ns", point.offsetNs}});
  }
  return points;
}

Json slaveErrorData(const std::vector<SlaveError>& errors) {
  Json list = Json::array();
  for (const auto& [slave, code, count] : errors)
    list.push_back({{"slave", slave},
                    {"code", code},
                    {"text", errorText(code)},
                    {"count", count.count},
                    {"first_cycle", count.first},
                    {"last_cycle", count.last}});
  return list;
}

} // namespace

Json reportData(const ReportFacts& facts, const Recording& recording) {
  Json data;
  data["run"] = runData(facts);
  data["summary"] = summaryData(facts, recording.histogram(Recording::wakeUp));
  data["host"] = hostData(facts.host);
  data["phases"] = phaseData(recording);
  data["slowest_exchange"] = slowestData(recording.course());
  data["course"] = courseData(recording.course());
  data["clock"] = clockData(recording);
  data["states"] = Json::array();
  for (const StateChange& change : facts.states)
    data["states"].push_back({{"cycle", change.cycle}, {"states", change.states}});
  data["states_without_place"] = facts.statesWithoutPlace;
  data["errors"] = Json::array();
  for (const ErrorSpan& span : recording)
    data["errors"].push_back({{"code", span.code},
                              {"text", errorText(span.code)},
                              {"first_cycle", span.first},
                              {"last_cycle", span.last},
                              {"count", span.count}});
  data["errors_without_place"] = recording.lostErrors();
  data["slave_errors"] = slaveErrorData(facts.slaveErrors);
  data["master_seen"] = seenData(facts.masterSeen);
  data["slaves"] = slavesData(facts.slaveFacts);
  return data;
}

} // namespace igh_bus
