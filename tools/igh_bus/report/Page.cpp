// The page: every picture is drawn here, so it needs no script, no network and no other file.
#include "report/Html.h"
#include "report/PageParts.h"
#include "report/Pictures.h"
#include "report/Report.h"
#include "report/Tables.h"
#include "text/Text.h"

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

struct Outcome {
  const char* style;
  const char* mark;
  const char* words;
  const char* title;
};
// A run with errors may be none that failed, but is not to be taken for a good one.
constexpr Outcome OUTCOMES[] = {{"good", "✓", "Success: ", "success"},
                                {"warn", "⚠", "With errors: ", "with errors"},
                                {"bad", "✗", "Failure: ", "failure"}};

// Inside a script element only "</" and "<!--" could end it or keep it from ending.
std::string embedded(const Json& data) {
  std::string text = data.dump();
  for (std::size_t place = 0; (place = text.find('<', place)) != std::string::npos;)
    text.replace(place, 1, "\\u003c");
  return text;
}

std::string errorWords(const Json& errors) {
  if (errors.empty())
    return "No slave raised an error.";
  constexpr std::size_t TOLD = 3;
  std::string words;
  for (std::size_t i = 0; i < errors.size() && i < TOLD; ++i)
    words += (i == 0 ? "" : ", ") +
             (errors[i].at("slave") == "master" ? "the bus as a whole" : shown(errors[i].at("slave"))) + " " +
             shown(errors[i].at("count"));
  if (errors.size() > TOLD)
    words += format(", and %zu more in the table below", errors.size() - TOLD);
  return "Errors by slave: " + words + ".";
}

std::string summaryWords(const Json& summary) {
  return "Worst wake-up <strong>" + shown(summary.at("worst_wake_up_us")) + " µs</strong> late, in cycle " +
         shown(summary.at("worst_wake_up_cycle")) +
         format(" (%.3g s after the start); p99.99 <strong>",
                summary.at("worst_wake_up_after_s").get<double>()) +
         shown(summary.at("p99.99_us")) + " µs</strong>. " + errorWords(summary.at("errors_by_slave"));
}

std::string watchedSection(const Json& data) {
  std::string pictures = plotPictures(data);
  if (data.contains("record"))
    pictures += factTable("Record of each cycle", data.at("record"));
  return pictures.empty()
             ? ""
             : "<section aria-labelledby=\"watched\">\n<h2 id=\"watched\">Watched entries</h2>\n" + pictures +
                   "</section>\n";
}

} // namespace

std::string reportPage(const Json& data) {
  const Json& run = data.at("run");
  const bool success = run.at("success").get<bool>();
  const Outcome& outcome = OUTCOMES[!success ? 2 : run.at("errors") == 0 ? 0 : 1];
  const std::string realTime = run.at("real_time").get<std::string>();
  const std::string date = shown(run.at("date"));
  Json facts = run;
  for (const char* key : {"command_line", "verdict", "success"})
    facts.erase(key);
  return filled(
      PAGE,
      {{"style", STYLE},
       {"title", shown(run.at("title")) + ", " + date + ": " + outcome.title},
       {"outcome", outcome.style},
       {"verdict", std::string("<span aria-hidden=\"true\">") + outcome.mark + "</span> " + outcome.words +
                       shown(run.at("verdict"))},
       {"summary", summaryWords(data.at("summary"))},
       {"warning", realTime == "yes" ? ""
                                     : "<p class=\"warning\"><span aria-hidden=\"true\">⚠</span> Not a "
                                       "real-time run: " +
                                           escaped(realTime.substr(realTime.find(' ') + 1)) + "</p>\n"},
       {"what", shown(run.at("title")) + " · " + date + " · " + shown(run.at("cycles")) + " cycles of " +
                    shown(run.at("period_us")) + " µs · " + shown(data.at("host").at("name"))},
       {"histogram", histogramPicture(data)},
       {"latency", latencyPicture(data)},
       {"phases", phasesPicture(data)},
       {"timing", timingTable(data)},
       {"states", statesPicture(data)},
       {"errors", errorTable(data)},
       {"troubles", troubleTable(data)},
       {"slaves", slaveTable(data)},
       {"watched", watchedSection(data)},
       {"clock", clockPictures(data)},
       {"command", shown(run.at("command_line"))},
       {"run", factTable("Run", facts)},
       {"host", factTable("Host", data.at("host"))},
       {"version", shown(run.at("version"))},
       {"date", date},
       {"data", embedded(data)}});
}

} // namespace igh_bus
