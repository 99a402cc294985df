#include "report/Pictures.h"

#include "report/Chart.h"
#include "report/Html.h"
#include "text/Text.h"

#include <algorithm>
#include <cmath>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;
using Numbers = std::vector<double>;

constexpr double LEAST_US = 0.1; // on logarithmic axes

Axis decades(double lowest, double highest) {
  return {std::pow(10, std::floor(std::log10(std::max(lowest, LEAST_US)))),
          std::max(highest, LEAST_US * 10) * 2.2, Axis::logarithmic};
}

Points classesOf(const Json& phase) {
  Points classes;
  for (const Json& entry : phase.at("classes"))
    classes.emplace_back(entry.at(0).get<double>(), entry.at(1).get<double>());
  // What lies beyond the classes is known by its number and its maximum.
  if (phase.at("beyond_classes") != 0)
    classes.emplace_back(phase.at("max_us").get<double>() - 1, phase.at("beyond_classes").get<double>());
  return classes;
}

Numbers sumOf(const Json& means, std::size_t intervals) {
  Numbers sum(intervals, 0);
  for (const char* part : {"receive", "sdo", "callback", "send"}) {
    for (std::size_t i = 0; i < intervals; ++i)
      sum[i] += means.at(part).at(i).get<double>();
  }
  for (std::size_t i = 0; i < intervals; ++i)
    sum[i] = std::max(sum[i], means.at("total").at(i).get<double>());
  return sum;
}

// So that a few intervals with a long exchange do not flatten all others.
double commonHeight(Numbers sums) {
  std::sort(sums.begin(), sums.end());
  const double most = sums.back();
  const double common = sums[sums.size() * 95 / 100] * 1.6;
  return std::max(std::min(most * 1.1, common), 1.);
}

struct Part {
  const char* key;
  const char* style;
  const char* name;
};
constexpr Part PARTS[] = {{"receive", "fill receive", "receive"},
                          {"sdo", "fill sdo", "SDO step"},
                          {"callback", "fill callback", "callback"},
                          {"send", "fill send", "send"},
                          {"total", "fill other", "between them"}};

// From the bottom up, in a share of 1; the last part fills up to the whole.
void stackBar(Chart& chart, double lane, const Numbers& parts, double total) {
  double from = 0;
  for (std::size_t i = 0; i < parts.size() && total > 0; ++i) {
    const double to = i + 1 < parts.size() ? std::min(from + parts[i] / total * 100, 100.) : 100;
    if (to - from > 0.05)
      chart.box(from, to, lane - 0.8, lane - 0.2, PARTS[i].style);
    from = to;
  }
}

std::string sharesChart(const Json& data) {
  constexpr double LANES = 2;
  Chart chart(84, {0, 100}, {0, LANES});
  chart.axisX("share of the exchange, %");
  chart.laneLabel(1.5, "mean");
  chart.laneLabel(0.5, "slowest");
  const Json& course = data.at("course");
  const Json& slowest = data.at("slowest_exchange");
  Numbers means;
  Numbers costs;
  std::string words = "Slowest exchange, cycle " + shown(slowest.at("cycle")) + ":";
  for (const auto& [key, style, name] : PARTS) {
    means.push_back(data.at("phases").at(key).at("mean_us").get<double>());
    costs.push_back(slowest.at(std::string(key) + "_us").get<double>());
    words += format(" %s %.10g us,", std::string(key) == "total" ? "altogether" : name, costs.back());
  }
  stackBar(chart, LANES, means, means.back());
  stackBar(chart, LANES - 1, costs, costs.back());
  words.back() = '.';
  return course.at("cycles").empty() ? "" : chart.svg("shares", "Where the time of an exchange goes", words);
}

} // namespace

double cyclesOf(const Json& data) {
  return std::max(1.0, data.at("run").at("cycles").get<double>());
}

std::string histogramPicture(const Json& data) {
  const Json& wakeUp = data.at("phases").at("wake_up_latency");
  const Json& exchange = data.at("phases").at("total");
  const Points delays = classesOf(wakeUp);
  const Points lengths = classesOf(exchange);
  double highest = 1;
  double shortest = 1e9;
  double longest = 10;
  for (const Points* classes : {&delays, &lengths}) {
    for (const auto& [us, count] : *classes) {
      shortest = std::min(shortest, us);
      longest = std::max(longest, us + 1);
      highest = std::max(highest, count);
    }
  }
  constexpr double BELOW_ONE = 0.5; // so that a single sample has a height, and the first class a width
  Chart chart(230, {std::max(std::min(shortest, longest / 10), BELOW_ONE), longest * 1.15, Axis::logarithmic},
              {BELOW_ONE, std::pow(10, std::ceil(std::log10(highest * 3))), Axis::logarithmic});
  chart.axisX("µs");
  chart.axisY("samples");
  chart.bars(delays, 1, "fill late");
  chart.bars(lengths, 1, "outline");
  int row = 0;
  for (const auto& [key, name] :
       {std::pair("p50_us", "p50"), {"p99_us", "p99"}, {"p99.99_us", "p99.99"}, {"max_us", "max"}})
    chart.vertical(wakeUp.at(key).get<double>() + 0.5, row++, name + (" " + shown(wakeUp.at(key))));
  return figure("How late, how long.",
                "How often a wake-up was so many µs late, and how often an exchange took so many; classes of "
                "1 µs, both axes logarithmic. The dashed lines belong to the wake-ups.",
                {{"fill late", "wake-up latency"}, {"outline", "whole exchange"}},
                chart.svg("histogram", "Histogram of wake-up latency and exchange",
                          "Wake-up latency: p50 " + shown(wakeUp.at("p50_us")) + ", p99.99 " +
                              shown(wakeUp.at("p99.99_us")) + ", max " + shown(wakeUp.at("max_us")) +
                              " us. Whole exchange: p50 " + shown(exchange.at("p50_us")) + ", p99.99 " +
                              shown(exchange.at("p99.99_us")) + ", max " + shown(exchange.at("max_us")) +
                              " us. All numbers are in the table of the timing."));
}

std::string latencyPicture(const Json& data) {
  const Json& course = data.at("course");
  const auto starts = course.at("cycles").get<Numbers>();
  if (starts.empty())
    return {};
  const double end = cyclesOf(data);
  const auto lowest = course.at("latency_min_us").get<Numbers>();
  const auto highest = course.at("latency_max_us").get<Numbers>();
  const Points least = steps(starts, lowest, end);
  const Points most = steps(starts, highest, end);
  const Json& wakeUp = data.at("phases").at("wake_up_latency");
  const double worst = wakeUp.at("max_us").get<double>();
  const double period = data.at("run").at("period_us").get<double>();
  Chart chart(230, {0, end}, decades(*std::min_element(lowest.begin(), lowest.end()), worst));
  chart.axisX("cycle");
  chart.axisY("µs");
  chart.area(least, most, "fill spread");
  chart.line(least, "line min");
  chart.line(most, "line max");
  chart.line(steps(starts, course.at("latency_median_us").get<Numbers>(), end), "line median");
  if (period < worst * 1.6)
    chart.horizontal(period, "one period");
  chart.dot(wakeUp.at("max_cycle").get<double>() + 0.5, worst, "max");
  const std::string peak = shown(wakeUp.at("max_us")) + " µs in cycle " + shown(wakeUp.at("max_cycle"));
  chart.label(wakeUp.at("max_cycle").get<double>(), worst, peak);
  return figure(
      "Wake-up latency over the run.",
      "Least, median and most of every " + shown(course.at("cycles_per_interval")) +
          " cycles; the axis is logarithmic, so that one outlier does not hide the rest. The median "
          "is that of coarse classes, exact to 6 % (below 0.5 µs to 0.26 µs); the extremes are exact.",
      {{"line max", "most"}, {"line median", "median"}, {"line min", "least"}},
      chart.svg("latency", "Wake-up latency over the cycles of the run", "The worst: " + peak + "."));
}

std::string phasesPicture(const Json& data) {
  const Json& course = data.at("course");
  const auto starts = course.at("cycles").get<Numbers>();
  if (starts.empty())
    return {};
  const double end = cyclesOf(data);
  const Numbers sums = sumOf(course.at("mean_us"), starts.size());
  const double height = commonHeight(sums);
  Chart chart(220, {0, end}, {0, height});
  chart.axisX("cycle");
  chart.axisY("µs");
  std::vector<Key> keys;
  Numbers below(starts.size(), 0);
  for (const auto& [key, style, name] : PARTS) {
    const bool last = std::string(key) == "total";
    const auto part = last ? sums : course.at("mean_us").at(key).get<Numbers>();
    Numbers above = below;
    for (std::size_t i = 0; i < above.size(); ++i)
      above[i] = last ? part[i] : below[i] + part[i];
    chart.area(steps(starts, below, end), steps(starts, above, end), style);
    keys.push_back({style, name});
    below = above;
  }
  std::size_t cut = 0;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    if (sums[i] <= height)
      continue;
    ++cut;
    chart.dot(starts[i], height, "max");
  }
  const Json& slowest = data.at("slowest_exchange");
  const std::string beyond =
      cut == 0 ? ""
               : format(" A dot at the upper edge: the mean goes beyond the picture, at most to %.1f µs.",
                        *std::max_element(sums.begin(), sums.end()));
  return figure("Where the time of a cycle goes.",
                "Phases of the exchange, stacked: means of every " + shown(course.at("cycles_per_interval")) +
                    " cycles." + beyond + " Below: shares of the mean and of the slowest exchange, " +
                    shown(slowest.at("total_us")) + " µs in cycle " + shown(slowest.at("cycle")) +
                    ". The library counts whole µs.",
                keys,
                chart.svg("phases", "Phases of the exchange over the cycles of the run",
                          "Means of receive, SDO step, callback and send, one upon the other.") +
                    sharesChart(data));
}

} // namespace igh_bus
