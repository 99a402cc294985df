#include "report/Tables.h"

#include "report/Html.h"
#include "text/Text.h"

#include <algorithm>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

struct TimingColumn {
  const char* key;
  const char* heading;
};
constexpr TimingColumn TIMING[] = {{"min_us", "min"}, {"mean_us", "mean"},       {"p50_us", "p50"},
                                   {"p99_us", "p99"}, {"p99.9_us", "p99.9"},     {"p99.99_us", "p99.99"},
                                   {"max_us", "max"}, {"max_cycle", "in cycle"}, {"over_period", "> period"}};

std::string textOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : std::string();
}

std::string stateCell(const Json& slave) {
  std::string style = textOf(slave.value("state", Json()));
  const std::string words = style;
  std::transform(style.begin(), style.end(), style.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return "<span class=\"swatch " + escaped(style) + "\"></span>" + escaped(words);
}

std::string alStatusCell(const Json& slave) {
  const Json code = slave.value("al_status", Json());
  if (!code.is_number_integer() || code == 0)
    return code.is_string() ? shown(code) + " " + shown(slave.value("al_text", Json())) : "";
  return "<span class=\"trouble\">" + format("0x%04X ", code.get<unsigned>()) +
         escaped(textOf(slave.value("al_text", Json()))) + "</span>";
}

std::string lostPortsCell(const Json& slave) {
  std::string ports;
  for (const Json& port : slave.value("lost_ports", Json::array()))
    ports += (ports.empty() ? "" : ", ") + shown(port);
  return ports.empty() ? "none" : "<span class=\"trouble\">" + ports + "</span>";
}

// What a slave is told of, where anyone asked for it.
struct SlaveColumn {
  const char* key;
  const char* heading;
  std::string (*cell)(const Json& slave);
};
constexpr SlaveColumn STATUS[] = {{"state", "state", stateCell},
                                  {"al_status", "AL status", alStatusCell},
                                  {"answers", "answers",
                                   [](const Json& slave) {
                                     return slave.value("answers", true)
                                                ? std::string("yes")
                                                : std::string("<span class=\"trouble\">no</span>");
                                   }},
                                  {"lost_ports", "ports without link", lostPortsCell}};

} // namespace

std::string timingTable(const Json& data) {
  std::vector<Table::Column> columns{{"phase"}};
  for (const auto& [key, heading] : TIMING)
    columns.push_back({heading, true});
  columns.push_back({"in the slowest exchange", true});
  Table table("Timing in µs", columns);
  for (const auto& [name, phase] : data.at("phases").items()) {
    std::vector<std::string> cells{shown(phase.at("title"))};
    std::vector<std::string> attributes{""};
    for (const auto& [key, heading] : TIMING) {
      cells.push_back(std::string(key) == "mean_us" ? format("%.2f", phase.at(key).get<double>())
                                                    : shown(phase.at(key)));
      attributes.push_back("data-value=\"" + name + "/" + key + "\"");
    }
    const Json cost = data.at("slowest_exchange").value(name + "_us", Json());
    cells.push_back(cost.is_null() ? "" : shown(cost));
    table.row(cells, attributes);
  }
  return table.html();
}

std::string errorTable(const Json& data) {
  if (data.at("slave_errors").empty())
    return "<p>No errors.</p>\n";
  Table table("Errors by slave and kind",
              {{"slave"}, {"error"}, {"count", true}, {"first cycle", true}, {"last cycle", true}});
  for (const Json& error : data.at("slave_errors"))
    table.row({shown(error.at("slave")), shown(error.at("text")), shown(error.at("count")),
               shown(error.at("first_cycle")), shown(error.at("last_cycle"))});
  return table.html();
}

std::string slaveTable(const Json& data) {
  const Json& slaves = data.at("slaves");
  std::vector<Table::Column> columns{{"position", true}, {"name"}, {"alias", true}};
  std::vector<const SlaveColumn*> known;
  for (const SlaveColumn& column : STATUS) {
    if (std::none_of(slaves.begin(), slaves.end(),
                     [&](const Json& slave) { return slave.contains(column.key); }))
      continue;
    known.push_back(&column);
    columns.push_back({column.heading});
  }
  Table table("Slaves on the bus", columns);
  for (const Json& slave : slaves) {
    std::vector<std::string> cells{shown(slave.at("position")), shown(slave.at("name")),
                                   shown(slave.at("alias"))};
    for (const auto* column : known)
      cells.push_back(column->cell(slave));
    table.row(cells);
  }
  return table.html();
}

std::string troubleTable(const Json& data) {
  Table table("Troubles of the slaves, as they were seen", {{"slave"}, {"from cycle", true}, {"trouble"}});
  bool any = false;
  const auto add = [&](const std::string& whose, const Json& list) {
    for (const Json& seen : list)
      table.row({whose, shown(seen.at("cycle")), shown(seen.at("text"))});
    any = any || !list.empty();
  };
  add("master", data.value("master_seen", Json::array()));
  for (const Json& slave : data.at("slaves"))
    add(shown(slave.at("position")) + " " + shown(slave.at("name")), slave.value("seen", Json::array()));
  return any ? table.html() : "";
}

std::string factTable(const std::string& caption, const Json& facts) {
  Table table(caption, {{"what"}, {"value"}});
  for (const auto& [key, value] : facts.items()) {
    std::string label = key;
    std::replace(label.begin(), label.end(), '_', ' ');
    table.row({escaped(label), shown(value)});
  }
  return table.html();
}

} // namespace igh_bus
