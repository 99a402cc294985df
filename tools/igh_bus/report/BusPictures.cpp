#include "report/Pictures.h"

#include "report/Chart.h"
#include "report/Html.h"
#include "text/Text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

// A symmetric axis that holds all of these.
Axis symmetricAxis(const Json& clock, std::initializer_list<const char*> keys) {
  double most = 10;
  for (const Json& point : clock) {
    for (const char* key : keys)
      most = std::max(most, std::abs(point.at(key).get<double>()));
  }
  return {-most * 1.5, most * 1.5, Axis::symmetric};
}

Points pointsOf(const Json& clock, const char* key) {
  Points points;
  for (const Json& point : clock)
    points.emplace_back(point.at("cycle").get<double>(), point.at(key).get<double>());
  return points;
}

struct State {
  const char* name;
  const char* style;
};
constexpr State STATES[] = {
    {"OP", "fill op"}, {"SAFEOP", "fill safeop"}, {"PREOP", "fill preop"}, {"INIT", "fill init"}};

// "PREOP+OP" has PREOP and OP, and no other.
bool hasState(const std::string& states, const std::string& name) {
  return ("+" + states + "+").find("+" + name + "+") != std::string::npos;
}

std::set<int> codesOf(const Json& errors) {
  std::set<int> codes;
  for (const Json& error : errors)
    codes.insert(error.at("code").get<int>());
  return codes;
}

const char* laneName(int code) {
  static constexpr const char* NAMES[] = {"counter", "link", "slave", "added", "lost"};
  return code >= 1 && code <= 5 ? NAMES[code - 1] : "other";
}

void drawStates(Chart& chart, const Json& data, double lanes) {
  const Json& states = data.at("states");
  const bool open = data.at("states_without_place") != 0; // then nobody knows how long the last one held
  for (std::size_t i = 0; i < states.size(); ++i) {
    const auto from = states[i].at("cycle").get<double>();
    const double to = i + 1 < states.size() ? states[i + 1].at("cycle").get<double>()
                      : open                ? from
                                            : cyclesOf(data);
    double lane = lanes;
    for (const auto& [name, style] : STATES) {
      if (hasState(states[i].at("states").get<std::string>(), name))
        chart.box(from, to, lane - 0.85, lane - 0.15, style);
      --lane;
    }
  }
}

} // namespace

std::string clockPictures(const Json& data) {
  const Json& clock = data.at("clock");
  if (clock.empty())
    return "<p>The run did not follow the reference clock, or ended before the first 1024 cycles in "
           "OP.</p>\n";
  const Axis cycles{0, cyclesOf(data)};
  Chart course(220, cycles, symmetricAxis(clock, {"difference_ns", "min_ns", "max_ns"}));
  course.axisX("cycle");
  course.axisY("ns");
  course.area(pointsOf(clock, "min_ns"), pointsOf(clock, "max_ns"), "fill spread");
  course.line(pointsOf(clock, "difference_ns"), "line median");
  Chart offsets(180, cycles, symmetricAxis(clock, {"offset_ns"}));
  offsets.axisX("cycle");
  offsets.axisY("ns");
  offsets.line(pointsOf(clock, "offset_ns"), "line max");
  const std::string last = shown(clock.back().at("difference_ns")) + " ns";
  const std::string offset = shown(clock.back().at("offset_ns")) + " ns";
  return figure("Clock difference, master less reference.",
                "At the end of each interval of the controller, with its extremes. At last " + last +
                    ". The axis is even up to 10 ns and logarithmic beyond.",
                {{"line median", "difference"}, {"fill spread", "extremes"}},
                course.svg("difference", "Clock difference over the cycles of the run",
                           "The difference was " + last + " at last.")) +
         figure("Offset of the master's time.",
                "By which it follows the reference clock; at last " + offset + ".", {},
                offsets.svg("offset", "Offset of the master's time over the cycles of the run",
                            "The offset was " + offset + " at last."));
}

std::string statesPicture(const Json& data) {
  const auto codes = codesOf(data.at("errors"));
  const double lanes = static_cast<double>(std::size(STATES) + codes.size());
  constexpr double LANE_HEIGHT = 24;
  Chart chart(lanes * LANE_HEIGHT, {0, cyclesOf(data)}, {0, lanes});
  chart.axisX("cycle");
  std::vector<Key> keys;
  double lane = lanes;
  for (const auto& [name, style] : STATES) {
    chart.laneLabel(lane-- - 0.5, name);
    keys.push_back({style, name});
  }
  drawStates(chart, data, lanes);
  for (const int code : codes) {
    chart.laneLabel(lane - 0.5, laneName(code));
    for (const Json& span : data.at("errors")) {
      if (span.at("code") == code)
        chart.box(span.at("first_cycle").get<double>(), span.at("last_cycle").get<double>() + 1, lane - 0.8,
                  lane - 0.2, "fill error");
    }
    --lane;
  }
  if (!codes.empty())
    keys.push_back({"fill error", "error"});
  std::string words = "States:";
  for (const Json& change : data.at("states"))
    words += " from cycle " + shown(change.at("cycle")) + " " + change.at("states").get<std::string>() + ",";
  words.back() = '.';
  std::string caption = "In which states slaves were, one lane for each: as long as two lanes are filled, "
                        "slaves differ. Errors have a lane for each kind.";
  if (data.at("states_without_place") != 0)
    caption += " " + shown(data.at("states_without_place")) + " more changes of states are not drawn.";
  if (data.at("errors_without_place") != 0)
    caption += " " + shown(data.at("errors_without_place")) + " more errors are not drawn.";
  return figure("States of the slaves, and errors.", caption, keys,
                chart.svg("states", "States and errors over the cycles of the run", words));
}

} // namespace igh_bus
