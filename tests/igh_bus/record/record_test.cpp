// What is kept of the watched entries: the file, with every row or a word of those that are missing, and the
// intervals of the report.
#include "Program.h"

#include "host/OrdinaryThread.h"
#include "record/Recorder.h"
#include "report/Plots.h"

#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sched.h>
#include <thread>

using namespace igh_bus;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

TEST(Record, RowsThatFindNoPlaceAreCountedAtTheRowBehindThemAndTheLastOneIsAlwaysThere) {
  constexpr std::uint64_t CYCLES = 100000; // far more than pipe, buffer and ring take
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::string text;
  RecordResult result;
  std::thread reader;
  {
    Recorder recorder({"/proc/self/fd/" + std::to_string(ends[1]), 1}, {"0:A"}, 16);
    for (std::uint64_t cycle = 0; cycle < CYCLES; ++cycle) {
      const auto value = static_cast<double>(cycle) / 3;
      recorder.note({cycle, 5, 0, 0, 8, cycle % 10 == 9 ? 6U : 0U}, &value);
    }
    reader = std::thread([&] {
      char part[4096];
      for (ssize_t count = 0; (count = read(ends[0], part, sizeof part)) > 0;)
        text.append(part, static_cast<std::size_t>(count));
    });
    result = recorder.finish();
  }
  close(ends[1]);
  reader.join();
  close(ends[0]);
  const auto lines = linesOf(text);
  std::uint64_t next = 0;
  std::uint64_t missing = 0;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    unsigned long long cycle = 0;
    unsigned long long lost = 0;
    double value = 0;
    ASSERT_EQ(std::sscanf(lines[i].substr(0, lines[i].find(',')).c_str(), "%llu", &cycle), 1);
    const auto tail = lines[i].substr(lines[i].rfind(',', lines[i].rfind(',') - 1));
    ASSERT_EQ(std::sscanf(tail.c_str(), ",%llu,%lf", &lost, &value), 2) << lines[i];
    ASSERT_EQ(cycle, next + lost) << lines[i];
    ASSERT_EQ(value, static_cast<double>(cycle) / 3);
    const bool down = (cycle + 1) / 10 != next / 10; // in this cycle or in one that was lost before it
    ASSERT_THAT(lines[i], HasSubstr(down ? ",OP,1,link down," : ",OP,0,,"));
    missing += lost;
    next = cycle + 1;
  }
  EXPECT_EQ(next, CYCLES);
  EXPECT_GT(missing, 0U);
  EXPECT_EQ(result.lost, missing);
  EXPECT_EQ(result.rows, lines.size() - 1);
  EXPECT_EQ(result.rows + result.lost, CYCLES);
  EXPECT_THAT(result.text(), HasSubstr(std::to_string(missing) + " lost, because the file was too slow"));
}

TEST(Record, PlotsKeepExtremesInIntervalsOfEqualLengthHoweverLongTheRun) {
  constexpr std::size_t CYCLES = 70001;
  Plots plots(2);
  for (std::size_t cycle = 0; cycle < CYCLES; ++cycle) {
    const std::array<double, 2> values{cycle == 40000   ? NAN
                                       : cycle == 40001 ? 1e9
                                                        : std::fmod(cycle, 7),
                                       -static_cast<double>(cycle)};
    plots.note(values.data());
  }
  std::array<nlohmann::ordered_json, 2> plot;
  plots.describe(0, plot[0]);
  plots.describe(1, plot[1]);
  const std::vector<std::size_t> cycles = plot[1].at("cycles");
  EXPECT_GE(cycles.size(), 500U);
  EXPECT_LE(cycles.size(), 1000U);
  for (std::size_t i = 0; i < cycles.size(); ++i) {
    const auto next = i + 1 < cycles.size() ? cycles[i + 1] : CYCLES;
    EXPECT_EQ(cycles[i], i * 128);
    EXPECT_EQ(plot[1].at("maximum")[i], -static_cast<double>(cycles[i]));
    EXPECT_EQ(plot[1].at("minimum")[i], -static_cast<double>(next - 1));
    EXPECT_EQ(plot[0].at("maximum")[i], i == 40000 / 128 ? 1e9 : 6) << i;
    EXPECT_EQ(plot[0].at("minimum")[i], 0) << i;
  }
}

TEST(Record, TheThreadBesideTheCycleIsBoundToNoProcessorAndTakesNoSignal) {
  rememberProcessors();
  cpu_set_t former;
  cpu_set_t one;
  cpu_set_t seen;
  ASSERT_EQ(sched_getaffinity(0, sizeof former, &former), 0);
  CPU_ZERO(&one);
  CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  sigset_t blocked;
  OrdinaryThread([&] {
    sched_getaffinity(0, sizeof seen, &seen);
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  }).join();
  sched_setaffinity(0, sizeof former, &former);
  EXPECT_TRUE(CPU_EQUAL(&seen, &former));
  EXPECT_EQ(sigismember(&blocked, SIGINT), 1);
  sigset_t own;
  pthread_sigmask(SIG_BLOCK, nullptr, &own);
  EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

TEST(Record, ARunWritesATableThatOthersReadWithExactValuesAndSaysSoInItsReport) {
  const auto xml = scratch(
      "record.xml",
      "<EtherCATInfo><Vendor><Id>3</Id></Vendor><Descriptions><Devices><Device><Type ProductCode='1' "
      "RevisionNo='1'>D &lt;1&gt;</Type><RxPdo Sm='2' Fixed='1'><Index>#x1600</Index><Entry><Index>#x7000"
      "</Index><BitLen>32</BitLen><Name>Out</Name><DataType>REAL</DataType></Entry></RxPdo><TxPdo Sm='3' "
      "Fixed='1'><Index>#x1A00</Index><Entry><Index>#x6000</Index><BitLen>32</BitLen><Name>In, \"left\""
      "</Name><DataType>REAL</DataType></Entry></TxPdo></Device></Devices></Descriptions></EtherCATInfo>");
  const auto csv = scratch("record.csv");
  const auto folder = scratch("record_report");
  std::remove(folder.c_str());
  const auto run = ighBus("run --cycles 100 --set 0:Out=0.1 --watch-all --every 3 --eni " + xml +
                          " --record " + csv + " --report " + folder);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("\nRecorded: " + csv + ", 34 rows\n"));
  const auto script = scratch("record.py", "import csv, sys\n"
                                           "rows = list(csv.reader(open(sys.argv[1], newline='')))\n"
                                           "print(rows[0][-2:], rows[1][:2], rows[-1][0], rows[-1][4:])\n"
                                           "print({len(row) for row in rows})\n");
  EXPECT_EQ(runProgram("/usr/bin/env python3 " + script + " " + csv).out,
            "['0:Out', '0:In, \"left\"'] ['0', '0'] 99 "
            "['OP', '0', '', '0', '0.10000000149011612', '0.10000000149011612']\n{10}\n");
  const auto data = nlohmann::json::parse(readFile(folder + "/report.json"));
  EXPECT_EQ(data.at("record").at("rows"), 34);
  const auto& plot = data.at("plots").at(1);
  EXPECT_EQ(plot.at("slave"), 0);
  EXPECT_EQ(plot.at("slave_name"), "D <1>");
  EXPECT_EQ(plot.at("entry"), "In, \"left\"");
  EXPECT_EQ(plot.at("cycles").size(), 100U);
  EXPECT_EQ(plot.at("maximum").back(), 0.1F);

  EXPECT_EQ(ighBus("run --cycles 100 --record /dev/full --eni " + xml).status, 2);
  const auto words = wordsOf("--cycles 2000 --period 200us --watch-all --eni " + xml + " --record " + csv);
  std::string line = "/bin/sh -c 'ulimit -f 8; exec " IGH_BUS_PROGRAM " run";
  for (const auto& word : words)
    line += " " + word;
  const auto full = runProgram(line + "'");
  EXPECT_EQ(full.status, 2) << full.err;
  EXPECT_EQ(full.err, "igh_bus: " + csv + " is not complete: " + std::strerror(EFBIG) + "\n");
  EXPECT_THAT(full.out,
              ContainsRegex(" rows, then writing failed: [^\n]*; [0-9]+ lost\n.*ecrt_release_master"));
  EXPECT_EQ(readFile(csv).back(), '\n'); // ends with a whole row
  for (const auto& path : {xml, csv, script})
    std::remove(path.c_str());
  std::filesystem::remove_all(folder);
}

} // namespace
