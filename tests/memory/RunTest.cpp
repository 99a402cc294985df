// What igh_bus run does in its loop, the climb to OP and the bus itself included.
#include "Allocator.h"

#include "run/BusRun.h"
#include "scenario/Fixture.h"

#include <cstdio>

using namespace igh_bus;

TEST(Run, TheLoopOfARunAllocatesNothing) {
  constexpr std::size_t MANY = 1000000000;
  const std::string machine = IGH_TEST_SOURCE_DIR "/examples/machine/";
  setenv("ETHERCAT_SIMULATION_BUS", (machine + "machine.json").c_str(), 1);
  RunOptions options;
  for (const char* const file : {"coupler.xml", "terminals.xml", "modular_head.xml", "servo_drive.xml"})
    options.descriptions.push_back(machine + file);
  options.watches = {{5, "Position actual value"}};
  options.watches.push_back({5, "Target position"});
  options.periodNs = 200000;
  options.cycles = 3000; // the plots halve their resolution twice
  options.reportFolder = "kept in memory";
  options.recordFile = testing::TempDir() + "igh_bus_record_" + std::to_string(getpid()) + ".csv";
  RealTime realTime(std::nullopt, std::nullopt);
  std::size_t left = 0;
  bool seenOp = false;
  scenario::capture([&] {
    BusRun run(options, realTime);
    memory::failAt(MANY); // what the simulated master allocates does not count
    run.cycle();
    left = memory::failAt(0);
    seenOp = run.climb().seen(8);
    EXPECT_EQ(run.watches().finish()->rows, options.cycles);
  });
  std::remove(options.recordFile.c_str());
  EXPECT_EQ(left, MANY);
  EXPECT_TRUE(seenOp);
  unsetenv("ETHERCAT_SIMULATION_BUS");
}
