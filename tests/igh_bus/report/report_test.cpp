// The report of a run: what it keeps, its numbers, and the page as a browser shows it.
#include "report/Recording.h"

#include "Program.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using igh_bus::Recording;
using nlohmann::json;

std::string between(const std::string& text, const std::string& from, const std::string& to) {
  const auto found = text.find(from);
  const auto start = found + from.size();
  return found == std::string::npos ? "" : text.substr(start, text.find(to, start) - start);
}

TEST(Recording, CountsInClassesAndSpansOfFixedNumber) {
  const auto recording = std::make_unique<Recording>(1000000);
  for (int us = 1; us <= 9999; ++us)
    recording->note(us * 1000 + 999, {});
  recording->note(20000000, {});
  const auto& wakeUp = recording->histogram(Recording::wakeUp);
  EXPECT_EQ(wakeUp.percentileUs(0.5), 5000);
  EXPECT_EQ(wakeUp.percentileUs(0.9999), 9999);
  EXPECT_EQ(wakeUp.percentileUs(1), 20000);
  EXPECT_EQ(wakeUp.beyondLimit(), 9001U); // from 1000.999 us on
  EXPECT_EQ(wakeUp.beyond(), 1U);

  std::array<std::uint64_t, 6> totals{};
  for (std::uint64_t cycle = 0; cycle < 10000; ++cycle) {
    totals[1] += cycle % 3 != 0 ? 2 : 0; // two cycles of three
    totals[3] += cycle == 100 || cycle == 102 ? 1 : 0;
    recording->noteErrors(cycle, totals);
    recording->noteClock({cycle, static_cast<std::int64_t>(cycle), 0, 0, 0});
  }
  EXPECT_EQ(recording->end() - recording->begin(), 2048);
  EXPECT_EQ(recording->begin()[0].first, 1U);
  EXPECT_EQ(recording->begin()[0].last, 2U);
  EXPECT_EQ(recording->begin()[0].count, 4U);
  EXPECT_GT(recording->lostErrors(), 0U);
  EXPECT_GT(recording->clockPoints(), 1000U);
  for (std::size_t i = 1; i < recording->clockPoints(); ++i)
    EXPECT_EQ(recording->clock()[i].cycle - recording->clock()[i - 1].cycle, 8U);
}

TEST(Report, PageShowsTheNumbersOfTheJsonInPictures) {
  const auto folder = scratch("report");
  std::remove(folder.c_str());
  const auto outcome = ighBus("run --cycles 1500 --sync-to-reference --report " + folder + onMachine);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto data = json::parse(readFile(folder + "/report.json"));
  const auto page = readFile(folder + "/report.html");
  EXPECT_EQ(json::parse(between(page, "id=\"data\">", "</script>")), data);
  for (const auto& [name, phase] : data.at("phases").items()) {
    std::uint64_t sum = phase.at("beyond_classes").get<std::uint64_t>();
    for (const auto& entry : phase.at("classes"))
      sum += entry.at(1).get<std::uint64_t>();
    EXPECT_EQ(sum, 1500U) << name;
  }
  EXPECT_LE(data.at("phases").at("wake_up_latency").at("over_period"), data.at("run").at("cycles_left_out"));
  EXPECT_EQ(data.at("clock").size(), 1U);
  EXPECT_THAT(outcome.out,
              testing::HasSubstr("\nVerdict: " + data.at("run").at("verdict").get<std::string>()));
  EXPECT_TRUE(data.at("run").at("success").get<bool>());
  EXPECT_EQ(data.at("states").back().at("states"), "OP");

  if (std::string(CHROMIUM).empty()) {
    std::filesystem::remove_all(folder);
    GTEST_SKIP() << "no chromium";
  }
  // The page with eyes: what went wrong in it, pictures without extent, numbers that are not those of the
  // data.
  const auto watched = folder + "/watched.html";
  std::ofstream(watched) << "<script>let errors=0;window.onerror=()=>{++errors}</script>" << page
                         << R"(<script>
const phases=JSON.parse(document.getElementById('data').textContent).phases;
const charts=[...document.querySelectorAll('svg')];
const flat=charts.filter(c=>{const b=c.getBoundingClientRect();return b.width<500||b.height<100||
  ![...c.querySelectorAll('.bars,.course,.offset,.state')].some(m=>m.getBBox().height>0||m.getBBox().width>0)});
const cells=[...document.querySelectorAll('[data-value]')];
const wrong=cells.filter(c=>{const[p,k]=c.dataset.value.split('/');return Math.abs(c.textContent-phases[p][k])>1e-9});
document.body.dataset.seen=`${charts.length} ${flat.length} ${cells.length} ${wrong.length} ${errors}`;</script>)";
  const auto shown = runProgram(CHROMIUM " --headless --no-sandbox --disable-gpu --user-data-dir=" + folder +
                                "/profile --dump-dom file://" + watched);
  EXPECT_EQ(between(shown.out, "data-seen=\"", "\""), "9 0 48 0 0") << shown.err;
  std::filesystem::remove_all(folder);
}

} // namespace
