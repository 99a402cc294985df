// The page: every picture is drawn here, so it needs no script, no network and no other file.
#include "report/Chart.h"
#include "report/Report.h"
#include "text/Text.h"

#include <algorithm>
#include <cmath>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;
using Points = std::vector<std::pair<double, double>>;

constexpr const char* HEAD =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width\">\n<title>igh_bus run</title>\n<style>\n"
    "body{font:15px/1.5 system-ui,sans-serif;max-width:980px;margin:2em auto;padding:0 1em;color:#1d2733}\n"
    "h1{font-size:1.5em}h2{font-size:1.15em;margin-top:2em}\n"
    "table{border-collapse:collapse;margin:.6em 0}\n"
    "th,td{padding:.2em .9em .2em 0;text-align:left;border-bottom:1px solid #dde3ea}\n"
    "td.n,th.n{text-align:right;font-variant-numeric:tabular-nums}\n"
    "svg{display:block;width:100%;margin:1em 0;font:12px system-ui,sans-serif;fill:#1d2733}\n"
    ".title{font-size:14px;font-weight:600}.frame{fill:#f7f9fb;stroke:#c8d1db}\n"
    ".grid{stroke:#dfe5ec;fill:none}.bars{fill:#2f6db5}.note{fill:#44505e}\n"
    ".course{stroke:#2f6db5;stroke-width:1.6;stroke-linecap:round;fill:none}.spread{fill:#2f6db5;fill-"
    "opacity:.18}\n"
    ".offset{stroke:#b5562f;stroke-width:1.6;stroke-linecap:round;fill:none}\n"
    ".error{fill:#c0392b}.state{fill:#6b8fb8;stroke:#f7f9fb}\n"
    "</style>\n</head>\n<body>\n";

std::string number(const Json& value) {
  if (value.is_boolean())
    return value.get<bool>() ? "yes" : "no";
  return value.is_number_integer() ? value.dump() : format("%.10g", value.get<double>());
}

std::string factTable(const Json& facts) {
  std::string rows;
  for (const auto& [key, value] : facts.items()) {
    std::string label = key;
    std::replace(label.begin(), label.end(), '_', ' ');
    rows += "<tr><th>" + escaped(label) + "</th><td>" +
            escaped(value.is_string() ? value.get<std::string>() : number(value)) + "</td></tr>\n";
  }
  return "<table>\n" + rows + "</table>\n";
}

struct Column {
  const char* key;
  const char* label;
};
constexpr Column COLUMNS[] = {{"samples", "samples"}, {"min_us", "min"},          {"p50_us", "p50"},
                              {"p99_us", "p99"},      {"p99.9_us", "p99.9"},      {"p99.99_us", "p99.99"},
                              {"max_us", "max"},      {"over_period", "> period"}};

std::string phaseTable(const Json& phases) {
  std::string rows = "<tr><th>us</th>";
  for (const auto& [key, label] : COLUMNS)
    rows += "<th class=\"n\">" + escaped(label) + "</th>";
  rows += "</tr>\n";
  for (const auto& [name, phase] : phases.items()) {
    rows += "<tr><th>" + escaped(phase.at("title").get<std::string>()) + "</th>";
    for (const auto& [key, label] : COLUMNS)
      rows += "<td class=\"n\" data-value=\"" + name + "/" + key + "\">" + number(phase.at(key)) + "</td>";
    rows += "</tr>\n";
  }
  return "<table>\n" + rows + "</table>\n";
}

std::string errorTable(const Json& errors) {
  if (errors.empty())
    return "<p>None.</p>\n";
  std::string rows = "<tr><th>slave</th><th>error</th><th class=\"n\">count</th><th class=\"n\">first "
                     "cycle</th><th class=\"n\">last cycle</th></tr>\n";
  for (const Json& error : errors) {
    rows += "<tr><th>" + escaped(error.at("slave").get<std::string>()) + "</th><td>" +
            escaped(error.at("text").get<std::string>()) + "</td>";
    for (const char* key : {"count", "first_cycle", "last_cycle"})
      rows += "<td class=\"n\">" + number(error.at(key)) + "</td>";
    rows += "</tr>\n";
  }
  return "<table>\n" + rows + "</table>\n";
}

std::string histogramChart(const Json& phase) {
  Points bars;
  double highest = 1;
  double longest = 10;
  for (const Json& entry : phase.at("classes")) {
    bars.emplace_back(entry.at(0).get<double>(), entry.at(1).get<double>());
    longest = std::max(longest, bars.back().first + 1);
    highest = std::max(highest, bars.back().second);
  }
  constexpr double BELOW_ONE = 0.5; // so that a single sample has a height
  Chart chart(phase.at("title").get<std::string>(), 240, {0, longest * 1.02},
              {BELOW_ONE, std::pow(10, std::ceil(std::log10(highest * 1.2))), true});
  chart.axisX("us, in classes of 1 us");
  chart.axisY("samples");
  chart.bars(bars, 1);
  for (const auto& [key, label] : COLUMNS)
    chart.note(std::string(label) + "  " + number(phase.at(key)));
  if (phase.at("beyond_classes") != 0)
    chart.note("not drawn  " + number(phase.at("beyond_classes")));
  return chart.svg();
}

// A symmetric range that holds all of these, and 0.
Axis rangeOf(const Json& clock, std::initializer_list<const char*> keys) {
  double most = 1;
  for (const Json& point : clock) {
    for (const char* key : keys)
      most = std::max(most, std::abs(point.at(key).get<double>()));
  }
  return {-most * 1.05, most * 1.05};
}

std::string clockCharts(const Json& clock, double cycles) {
  if (clock.empty())
    return "<p>The run did not follow the reference clock, or ended before the first 1024 cycles in "
           "OP.</p>\n";
  Points difference;
  Points minimum;
  Points maximum;
  Points offset;
  for (const Json& point : clock) {
    const auto cycle = point.at("cycle").get<double>();
    difference.emplace_back(cycle, point.at("difference_ns").get<double>());
    minimum.emplace_back(cycle, point.at("min_ns").get<double>());
    maximum.emplace_back(cycle, point.at("max_ns").get<double>());
    offset.emplace_back(cycle, point.at("offset_ns").get<double>());
  }
  Chart course("Clock difference, master less reference", 240, {0, cycles},
               rangeOf(clock, {"difference_ns", "min_ns", "max_ns"}));
  course.axisX("cycle");
  course.axisY("ns");
  course.band(minimum, maximum, "spread");
  course.line(difference, "course");
  course.note("last  " + number(clock.back().at("difference_ns")) + " ns");
  Chart offsets("Offset of the master's time", 200, {0, cycles}, rangeOf(clock, {"offset_ns"}));
  offsets.axisX("cycle");
  offsets.axisY("ns");
  offsets.line(offset, "offset");
  offsets.note("last  " + number(clock.back().at("offset_ns")) + " ns");
  return course.svg() + offsets.svg();
}

std::string timeLine(const Json& data, double cycles) {
  constexpr int ROWS = 6; // the states, and errors 1 to 5 below
  Chart chart("States and errors", 220, {0, cycles}, {0, ROWS});
  chart.axisX("cycle");
  chart.rowLabel(ROWS - 0.5, "states");
  const Json& states = data.at("states");
  for (std::size_t i = 0; i < states.size(); ++i) {
    const auto from = states[i].at("cycle").get<double>();
    const double to = i + 1 < states.size() ? states[i + 1].at("cycle").get<double>() : cycles;
    chart.box(from, to, ROWS - 0.85, ROWS - 0.15, "state",
              states[i].at("states").get<std::string>() + " from cycle " + number(states[i].at("cycle")));
  }
  static constexpr const char* NAMES[] = {"counter", "link", "slave", "added", "lost"};
  for (int code = 1; code < ROWS; ++code)
    chart.rowLabel(ROWS - code - 0.5, NAMES[code - 1]);
  for (const Json& span : data.at("errors")) {
    const int code = span.at("code").get<int>();
    if (code < 1 || code >= ROWS)
      continue;
    chart.box(span.at("first_cycle").get<double>(), span.at("last_cycle").get<double>() + 1,
              ROWS - code - 0.85, ROWS - code - 0.15, "error",
              span.at("text").get<std::string>() + ", cycles " + number(span.at("first_cycle")) + " to " +
                  number(span.at("last_cycle")) + ", " + number(span.at("count")) + " times");
  }
  if (data.at("errors_without_place") != 0)
    chart.note(number(data.at("errors_without_place")) + " more errors are not drawn");
  return chart.svg();
}

// Inside a script element only "</" could end it.
std::string embedded(const Json& data) {
  std::string text = data.dump();
  for (std::size_t place = 0; (place = text.find("</", place)) != std::string::npos; place += 3)
    text.insert(place + 1, "\\");
  return text;
}

} // namespace

std::string reportPage(const Json& data) {
  const double cycles = std::max(1.0, data.at("run").at("cycles").get<double>());
  std::string page = HEAD;
  page += "<h1>" + escaped(data.at("run").at("title").get<std::string>()) + "</h1>\n";
  page += factTable(data.at("run"));
  page += "<h2>Timing</h2>\n" + phaseTable(data.at("phases"));
  for (const auto& [name, phase] : data.at("phases").items())
    page += histogramChart(phase);
  page += "<h2>Clock</h2>\n" + clockCharts(data.at("clock"), cycles);
  page += "<h2>Errors by slave</h2>\n" + errorTable(data.at("slave_errors"));
  page += "<h2>Course of the run</h2>\n" + timeLine(data, cycles);
  page += "<h2>Host</h2>\n" + factTable(data.at("host"));
  page += "<script type=\"application/json\" id=\"data\">" + embedded(data) + "</script>\n</body>\n</html>\n";
  return page;
}

} // namespace igh_bus
