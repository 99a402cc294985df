// One life of a master, over and over: each time one allocation of one call fails, the call is made again,
// and everything must be as if nothing had happened.
#include "Allocator.h"

#include "scenario/Fixture.h"

#include <cstdio>
#include <fstream>
#include <libxml/xmlerror.h>
#include <map>
#include <new>
#include <unistd.h>

using namespace scenario;

namespace {

Device wide() {
  Device device{0x10, {}, {{"Count", "UINT"}}, "<HideType RevisionNo='9'/>"};
  for (int i = 0; i < 17; ++i) { // one more than the first table of handles has
    device.outputs.push_back({"output number " + std::to_string(i), "USINT"});
  }
  device.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {0, 0}}};
  return device;
}

enum Outcome { passedOn, refused, succeeded, none }; // passed on: as std::bad_alloc

class Failure : public Scenario {
protected:
  // All that the application sees of a life: what is printed, values, bytes on the bus.
  std::string live(std::size_t failingStep, std::size_t failingAllocation) {
    target = failingStep;
    nth = failingAllocation;
    steps = 0;
    outcome = none;
    bus().addSlave(slaveOf(wide()));
    bus().addSlave(slaveOf({0x77}));
    std::string seen = capture([this] { // libxml2 tells of every failure on standard error
                         step("initialize", [] { return igh_master_initialize(0, 1000000, true); });
                         for (const std::string& path : paths) {
                           step("append_eni", [&] { return igh_master_append_eni(0, path.c_str()); });
                         }
                         for (int i = 0; i < 2; ++i) { // the second scan has something to lose
                           setUp();
                         }
                         for (int i = 0; i < 2; ++i) { // the second activation needs a new reservation
                           step("active", [] { return igh_master_active(0); });
                           createPdo(1, "2nd a channel with a long name", true, 17); // also while active
                           transfer();
                         }
                         hasHandles = false;
                         step("uninitialize", [] { return igh_master_uninitialize(0); });
                       })
                           .out;
    startOver();
    xmlResetLastError();
    return seen;
  }

  // Makes the call; in the target step first with a failing allocation.
  template <class CALL> void step(const char* name, CALL call) {
    std::printf("%s: ", name);
    if (steps++ != target || !failOnce(name, call)) {
      EXPECT_TRUE(call()) << name;
    }
  }

  // What a call prints that did not work is taken back.
  template <class CALL> bool failOnce(const char* name, CALL call) {
    std::fflush(stdout);
    const off_t printed = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    stepName = name;
    Outcome seen = passedOn;
    memory::failAt(nth);
    try {
      seen = call() ? succeeded : refused;
    } catch (const std::bad_alloc&) {
    }
    outcome = memory::failAt(0) == 0 ? seen : none;
    if (seen != succeeded) {
      EXPECT_EQ(igh_master_pdo_send(0, 0, 0), hasHandles) << "what was there stays";
      std::fflush(stdout);
      EXPECT_EQ(ftruncate(STDOUT_FILENO, lseek(STDOUT_FILENO, printed, SEEK_SET)), 0);
    }
    return seen == succeeded;
  }

  void setUp() {
    step("scan", [] { return igh_master_scan(0, nullptr); });
    hasHandles = false;
    step("config", [] { return igh_master_config_all_slave(0); });
    for (std::size_t i = 0; i < 17; ++i) {
      createPdo(0, "output number " + std::to_string(i), false, i);
    }
    for (const bool read : {true, false}) { // the second one shares
      step("create_sdo", [&] {
        return igh_master_create_sdo_request(0, 0, 0x2000, 1, DATA_TYPE_UINT, 0, read, &requests[0]);
      });
    }
    step("create_sdo",
         [&] { return igh_master_create_raw_sdo_request(0, 0, 0x2000, 2, 2, 0, false, &requests[1]); });
  }

  void createPdo(std::uint32_t slave, const std::string& name, bool read, std::size_t place) {
    step("create_pdo",
         [&] { return igh_master_create_pdo_info(0, slave, name.c_str(), read, &handles.at(place)); });
    std::printf("%u ", handles.at(place));
    hasHandles = true;
  }

  void transfer() {
    bus().setInputs(1, {1, 2, 3, 4});
    std::array<bool, 3> done{};
    double count = 0;
    const std::array<std::uint8_t, 2> object{5, 6};
    step("exchange", [&] {
      cycleUntil(8);
      for (std::size_t i = 0; i < 17; ++i) {
        igh_master_pdo_send(0, handles.at(i), static_cast<double>(i) + 1);
      }
      igh_master_sdo_recv(0, requests[0], &count, &done[0]);
      igh_master_sdo_send(0, requests[0], 0x0403, &done[1]);
      igh_master_raw_sdo_send(0, requests[1], object.data(), 2, &done[2]);
      cycle(40);
      return done[0] && done[1] && done[2];
    });
    for (const Bytes& bytes :
         {bus().outputs(0), bus().objectValue(0, 0x2000, 1), bus().objectValue(0, 0x2000, 2)}) {
      std::printf("%s ", testing::PrintToString(bytes).c_str());
    }
    std::printf("%g %g\n", count, value(handles[17]));
  }

  std::vector<std::string> paths{IGH_TEST_SOURCE_DIR "/tests/memory/modules.xml"};
  std::array<std::uint32_t, 18> handles{};
  std::array<std::uint32_t, 2> requests{};
  std::size_t target = 0;
  std::size_t nth = 0;
  std::size_t steps = 0;
  bool hasHandles = false;
  const char* stepName = "";
  Outcome outcome = none;
};

} // namespace

TEST_F(Failure, OfOneAllocationIsOverWhenTheCallIsMadeAgain) {
  paths.push_back(testing::TempDir() + "/memory." + std::to_string(getpid()));
  std::ofstream(paths.back()) << descriptionOf({wide()});
  constexpr std::size_t NEVER = ~std::size_t{0};
  const std::string expected = live(NEVER, 0);
  const std::size_t stepCount = steps;
  std::map<std::string, std::array<unsigned int, 3>> tries;
  for (std::size_t step = 0; step < stepCount; ++step) {
    for (std::size_t allocation = 1; allocation == 1 || outcome != none; ++allocation) {
      const std::size_t before = memory::pieces();
      ASSERT_EQ(live(step, allocation), expected) << stepName << ", allocation " << allocation;
      ASSERT_EQ(memory::pieces(), before) << stepName << ", allocation " << allocation;
      if (outcome != none) {
        ++tries[stepName].at(outcome);
      }
    }
  }
  for (const auto& [name, outcomes] : tries) {
    std::printf("%-12s passed on %4u, refused %4u, succeeded %4u\n", name.c_str(), outcomes[passedOn],
                outcomes[refused], outcomes[succeeded]);
  }
  unlink(paths.back().c_str());
}
