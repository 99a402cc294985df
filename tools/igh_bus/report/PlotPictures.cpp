// Watched entries over the run.
#include "report/Pictures.h"

#include "report/Chart.h"
#include "report/Html.h"
#include "text/Text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;
using Numbers = std::vector<double>;

enum Role { target, actual, neither };

constexpr const char* TARGET_WORDS[] = {"target", "set",     "setpoint", "command",
                                        "demand", "desired", "commanded"};
constexpr const char* ACTUAL_WORDS[] = {"actual", "act", "measured", "feedback"};

// "Target position" is the target of "position", "Position actual value" its actual value.
struct Quantity {
  std::string name;
  Role role = neither;
};

template <std::size_t COUNT> bool isOneOf(const std::string& word, const char* const (&words)[COUNT]) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

Quantity quantityOf(std::string entry) {
  std::transform(entry.begin(), entry.end(), entry.begin(), [](unsigned char letter) {
    return static_cast<char>(std::isalnum(letter) != 0 ? std::tolower(letter) : ' ');
  });
  Quantity quantity;
  std::istringstream words(entry);
  for (std::string word; words >> word;) {
    if (isOneOf(word, TARGET_WORDS))
      quantity.role = target;
    else if (isOneOf(word, ACTUAL_WORDS))
      quantity.role = actual;
    else if (word != "value")
      quantity.name += " " + word;
  }
  return quantity;
}

bool belongTogether(const Json& left, const Json& right) {
  const auto one = quantityOf(left.at("entry").get<std::string>());
  const auto other = quantityOf(right.at("entry").get<std::string>());
  return left.at("slave") == right.at("slave") && one.name == other.name && one.role != other.role &&
         one.role != neither && other.role != neither;
}

// In the order in which they were watched; a partner moves up to the first of the two.
std::vector<std::vector<const Json*>> grouped(const Json& plots) {
  std::vector<std::vector<const Json*>> groups;
  for (const Json& plot : plots) {
    const auto partner = std::find_if(groups.begin(), groups.end(), [&](const auto& group) {
      return group.size() == 1 && belongTogether(*group.front(), plot);
    });
    partner == groups.end() ? groups.push_back({&plot}) : partner->push_back(&plot);
  }
  return groups;
}

// What is no number has no place in JSON and is null there; Chart draws nothing where it is NaN.
Numbers numbersOf(const Json& values) {
  Numbers numbers;
  for (const Json& value : values)
    numbers.push_back(value.is_number() ? value.get<double>() : std::nan(""));
  return numbers;
}

std::string slaveOf(const Json& plot) {
  const auto name = plot.value("slave_name", std::string());
  return "slave " + shown(plot.at("slave")) + (name.empty() ? "" : " (" + name + ")");
}

std::string picture(const std::vector<const Json*>& group, double end, std::size_t number) {
  double lowest = std::nan(""); // which fmin and fmax pass over
  double highest = lowest;
  for (const Json* plot : group) {
    for (const char* key : {"minimum", "maximum"}) {
      for (const double value : numbersOf(plot->at(key))) {
        lowest = std::fmin(lowest, value);
        highest = std::fmax(highest, value);
      }
    }
  }
  if (std::isnan(lowest))
    lowest = highest = 0;
  Chart chart(160, {0, end}, around(lowest, highest));
  chart.axisX("cycle");
  chart.axisY("");
  std::vector<Key> keys;
  std::string title;
  for (const Json* plot : group) {
    const auto entry = plot->at("entry").get<std::string>();
    const bool dashed = group.size() == 2 && quantityOf(entry).role == target;
    const auto starts = plot->at("cycles").get<Numbers>();
    const Points least = steps(starts, numbersOf(plot->at("minimum")), end);
    const Points most = steps(starts, numbersOf(plot->at("maximum")), end);
    chart.area(least, most, dashed ? "band target" : "band actual");
    keys.push_back({dashed ? "line target" : "line actual", entry});
    title += (title.empty() ? "" : " and ") + entry;
  }
  const std::string words =
      title + " of " + slaveOf(*group.front()) + format(", from %.10g to %.10g", lowest, highest);
  return figure(title + ".", slaveOf(*group.front()) + format("; from %.10g to %.10g.", lowest, highest),
                keys, chart.svg(format("plot-%zu", number), title, words + "."));
}

} // namespace

std::string plotPictures(const Json& data) {
  std::string pictures;
  std::size_t number = 0;
  if (data.contains("plots")) {
    for (const auto& group : grouped(data.at("plots")))
      pictures += picture(group, cyclesOf(data), number++);
  }
  return pictures;
}

} // namespace igh_bus
