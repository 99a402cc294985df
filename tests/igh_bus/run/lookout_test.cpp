// What a run tells of its slaves, seen by a thread beside the cycle.
#include "run/Handover.h"

#include "Application.h"
#include "Program.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ethercat_simulation/Simulation.h>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

using namespace ethercat_simulation;
using nlohmann::json;

namespace {

// Three drives; what happens to one of them lasts, so the last look sees it, whenever it comes.
class Lookout : public testing::Test {
protected:
  void SetUp() override {
    reset();
    for (const char* name : {"X", "Y", "Z"}) {
      Slave drive;
      std::tie(drive.vendorId, drive.productCode, drive.revisionNumber, drive.name) =
          std::tuple(0x0B0B, 0x500, 0x20001, name);
      bus().addSlave(drive);
    }
  }
  void TearDown() override { reset(); }

  static Outcome run(json* slaves) {
    const auto folder = scratch("lookout");
    std::remove(folder.c_str());
    auto outcome = runHere("run --eni @servo_drive.xml --cycles 300 --report " + folder);
    *slaves = json::parse(readFile(folder + "/report.json"))["slaves"];
    std::filesystem::remove_all(folder);
    return outcome;
  }
};

TEST_F(Lookout, ItIsToldWhichSlaveFailedAndWhy) {
  const json well = {{"state", "OP"},
                     {"al_status", 0},
                     {"al_text", "no error"},
                     {"answers", true},
                     {"lost_ports", json::array()}};
  const json gone = {{"state", "unknown"}, {"al_text", "unknown"}, {"answers", false}};
  const json fallen = {{"state", "SAFEOP"},
                       {"al_status", 0x1B},
                       {"al_text", "process-data watchdog: no frames in time"},
                       {"lost_ports", json::array()}};
  const auto fault = [](FaultKind kind, unsigned int slave) {
    Fault made;
    made.kind = kind;
    std::tie(made.slave, made.at, made.duration) = std::tuple(slave, 150, 1000000);
    return made;
  };
  const std::tuple<Fault, int, json, std::vector<std::string>> cases[] = {
      {fault(FaultKind::alError, 1),
       3,
       {json(), fallen, json()},
       {"slave 1 (Y): SAFEOP, AL status 0x001B: process-data watchdog: no frames in time"}},
      {fault(FaultKind::wireBreak, 1),
       3,
       {json(), {{"lost_ports", {1}}, {"state", "OP"}}, gone},
       {"slave 1 (Y): OP, link lost at port 1", "slave 2 (Z): does not answer"}},
      {fault(FaultKind::silentSlave, 0), 3, {gone, json(), json()}, {"slave 0 (X): does not answer"}},
      {fault(FaultKind::linkDown, 0), 3, {gone, gone, gone}, {"master: no slave answers"}},
      {fault(FaultKind::errorCounter, 0), 0, {json(), json(), json()}, {}}};
  for (const auto& [order, status, expected, texts] : cases) {
    SetUp();
    ASSERT_TRUE(bus().addFault(order));
    json slaves;
    const auto outcome = run(&slaves);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    std::size_t told = 0;
    for (std::size_t at = 0; (at = outcome.out.find(" (seen in cycle ", at)) != std::string::npos; ++at)
      ++told;
    EXPECT_EQ(told, texts.size()) << outcome.out;
    for (const auto& text : texts) {
      EXPECT_THAT(outcome.out, testing::HasSubstr(": " + text + "\n")) << "when it happens";
      EXPECT_THAT(outcome.out, testing::HasSubstr("\n  " + text + " (seen in cycle "));
    }
    EXPECT_THAT(outcome.out, testing::ContainsRegex("\n300 cycles.*\n  last +299 "))
        << "without the last look's";
    EXPECT_GT(bus().callCount(Call::send), 300U) << "cycled on for it";
    ASSERT_EQ(slaves.size(), 3U);
    for (std::size_t slave = 0; slave < 3; ++slave) {
      const auto seen = slaves[slave];
      for (const auto& [key, value] : (expected[slave].is_null() ? well : expected[slave]).items())
        EXPECT_EQ(seen[key], value) << key << seen << texts.size();
    }
  }
}

// The library configures it too, so it is to be in OP like any other.
TEST_F(Lookout, ASlaveWithoutDescriptionThatStaysBehindIsTold) {
  Slave unknown;
  std::tie(unknown.vendorId, unknown.productCode, unknown.name) = std::tuple(0x0B0B, 0x999, "\xFF\x1B");
  bus().addSlave(unknown);
  json slaves;
  EXPECT_EQ(run(&slaves).status, 0) << "without a fault";
  SetUp();
  bus().addSlave(unknown);
  bus().setMaximumState(3, 2);
  const auto outcome = run(&slaves);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.err,
              testing::ContainsRegex("igh_bus: the bus never reached OP; it ended in PREOP\\+OP; slave "
                                     "3 \\(\xFF\\?\\): PREOP[^\n;]*; [0-9]+ errors \\(slave refused"));
  EXPECT_EQ(slaves[3]["name"], "\xEF\xBF\xBD?") << "the page and its numbers are UTF-8";
  for (std::size_t slave = 0; slave < 3; ++slave)
    bus().setMaximumState(static_cast<unsigned int>(slave), 2);
  EXPECT_THAT(run(&slaves).err, testing::HasSubstr("it ended in PREOP; slave 0 (X): PREOP, AL"));
}

// The trouble waits for the look, and the end of the run for the end of the trouble.
TEST_F(Lookout, WhatIsOverBeforeTheEndWasSeenWhenItWasThere) {
  constexpr std::uint64_t TWO_LOOKS = 14; // accesses; one may have begun too early
  std::uint64_t before = 0;
  int step = 0;
  bus().addObserver([&](Bus& line, std::uint64_t cycle) {
    const auto reads = line.callCount(Call::deviceIoctl);
    if (step == 0 && cycle > 150) {
      line.setAlError(1, 4, 0x1B);
    } else if (step == 1 && reads > before + TWO_LOOKS) {
      line.setAlError(1, 4, 0);
    } else if (step == 2 && line.alState(1) == 8) {
      std::raise(SIGINT);
    } else {
      return;
    }
    before = reads;
    ++step;
  });
  const auto outcome = runHere("diag --eni @servo_drive.xml --seconds 60");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out,
              testing::ContainsRegex("\ncycle [0-9]+: slave 1 \\(Y\\): SAFEOP, AL status 0x001B[^\n]*\n"
                                     "(cycle [^\n]*\n)*cycle [0-9]+: slave 1 \\(Y\\): OP again\n"))
      << "with progress and what lies between the two, when the looks take long";
}

TEST_F(Lookout, ARunThatCannotOpenTheMasterTwiceGoesOnAndSaysSo) {
  bus().failNext(Call::openMaster);
  json slaves;
  const auto outcome = run(&slaves);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(
      outcome.out,
      testing::ContainsRegex(
          "The slaves are not looked at beside the run: the master cannot be opened\n.*Verdict: in OP"));
  EXPECT_EQ(slaves[2]["state"], "unknown");
}

TEST(Handover, RowsAreOfOneMoment) {
  constexpr std::size_t VALUES = 64;
  igh_bus::Handover row(VALUES);
  std::atomic<bool> end{false};
  std::thread writer([&] {
    for (std::uint64_t number = 1; !end.load(std::memory_order_relaxed); ++number) {
      row.begin();
      for (std::size_t i = 0; i < VALUES; ++i)
        row.put(i, number);
      row.end();
      for (int i = 0; i < 500; ++i) // as a cycle has time between two rows
        static_cast<void>(end.load(std::memory_order_acquire));
    }
  });
  std::size_t torn = 0;
  std::vector<std::uint64_t> values;
  for (int reads = 0; reads < 100000; ++reads) {
    const auto number = row.read(values);
    torn += std::count(values.begin(), values.end(), number) == VALUES ? 0U : 1U;
  }
  end.store(true);
  writer.join();
  EXPECT_EQ(torn, 0U);
}

} // namespace
