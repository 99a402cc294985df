// One life of a master, over and over: each time one allocation of one call fails, the call is made again,
// and everything must be as if nothing had happened.
#include "Allocator.h"

#include "scenario/Fixture.h"

#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <libxml/xmlerror.h>
#include <map>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

using namespace scenario;

namespace {

// Standard output as a text that does not allocate while it grows. Standard error goes nowhere: libxml2 tells
// of every failure there.
class Output {
public:
  Output() : file(memfd_create("output", MFD_CLOEXEC)), out(dup(1)), error(dup(2)) {
    std::fflush(stdout);
    dup2(file, 1);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, 2);
    close(nowhere);
  }
  ~Output() {
    std::fflush(stdout);
    dup2(out, 1);
    dup2(error, 2);
    for (const int descriptor : {file, out, error}) {
      close(descriptor);
    }
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // What has come since the last time.
  std::string take() {
    std::fflush(stdout);
    const off_t end = lseek(file, 0, SEEK_CUR);
    std::string text(static_cast<std::size_t>(end - taken), '\0');
    EXPECT_EQ(pread(file, text.data(), text.size(), taken), end - taken);
    taken = end;
    return text;
  }

private:
  int file;
  int out;
  int error;
  off_t taken = 0;
};

const char* const modules =
    "<!DOCTYPE EtherCATInfo [<!ENTITY maker 'Maker &#169; Sons'>]>"
    "<EtherCATInfo xmlns:x='urn:x' Version='1.6'><Vendor><Id>2</Id><Name>&maker;</Name></Vendor>"
    "<Descriptions><Modules><Module><Type ModuleIdent='7'/><Name LcId='1033'/><TxPdo Sm='3' Fixed='true'>"
    "<Index DependOnSlot='true'>#x1A00</Index><Entry><Index DependOnSlot='true'>#x6000</Index><SubIndex>1"
    "</SubIndex><BitLen>16</BitLen><Name>a channel with a long name</Name><DataType>INT</DataType></Entry>"
    "</TxPdo></Module></Modules><Devices><Device><Type ProductCode='#x77' RevisionNo='1' x:a='&maker;'>M"
    "</Type><Slots SlotPdoIncrement='1' SlotIndexIncrement='16'><Slot><ModuleIdent>7</ModuleIdent></Slot>"
    "<Slot><ModuleIdent>7</ModuleIdent></Slot></Slots><Dc><OpMode><Name>DC</Name><AssignActivate>#x300"
    "</AssignActivate></OpMode></Dc></Device><Device><Type ProductCode='#x78' "
    "RevisionNo='1'>N</Type></Device>"
    "</Devices></Descriptions></EtherCATInfo>";

Device wide() {
  Device device{0x10, {}, {{"Count", "UINT"}}, "<HideType RevisionNo='9'/>"};
  for (int i = 0; i < 17; ++i) { // one more than the first table of handles has
    device.outputs.push_back({"output number " + std::to_string(i), "USINT"});
  }
  device.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {0, 0}}};
  return device;
}

enum class Outcome { none, passedOn, refused, succeeded }; // passed on: as std::bad_alloc

class Failure : public Scenario {
protected:
  // `text` tells then all that the application has seen of this life: what was printed, values, bytes on the
  // bus.
  void live(std::size_t failingStep, std::size_t failingAllocation) {
    target = failingStep;
    nth = failingAllocation;
    steps = 0;
    outcome = Outcome::none;
    text.clear();
    output = std::make_unique<Output>();
    bus().addSlave(slaveOf(wide()));
    bus().addSlave(slaveOf({0x77}));
    step("initialize", [] { return igh_master_initialize(0, 1000000, true); });
    for (const std::string& path : paths) {
      step("append_eni", [&] { return igh_master_append_eni(0, path.c_str()); });
    }
    for (int i = 0; i < 2; ++i) { // the second scan has something to lose
      setUp();
    }
    for (int i = 0; i < 2; ++i) { // the second activation needs a new reservation
      step("active", [] { return igh_master_active(0); });
      step("exchange", [] { return cycleToOp(); });
      createPdo(1, "2nd a channel with a long name", true, 17); // also while active
      transfer();
    }
    hasHandles = false;
    step("uninitialize", [] { return igh_master_uninitialize(0); });
    text += testing::PrintToString(bus().misuse().lines) + std::to_string(bus().openDeviceFiles()) +
            std::to_string(static_cast<int>(bus().reserved()));
    ethercat_simulation::reset();
    xmlResetLastError();
    output.reset();
  }

  // Makes the call; in the target step first with a failing allocation.
  template <class CALL> void step(const char* name, CALL call) {
    bool worked = false;
    if (steps++ == target) {
      stepName = name;
      worked = failOnce(call);
      if (!worked) {
        EXPECT_EQ(igh_master_pdo_send(0, 0, 0), hasHandles) << "what was there stays";
        output->take();
      }
    }
    if (!worked) {
      EXPECT_TRUE(call()) << name;
    }
    text += std::string(name) + ": " + output->take();
  }

  template <class CALL> bool failOnce(CALL call) {
    bool worked = false;
    bool threw = false;
    memory::failAt(nth);
    try {
      worked = call();
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    memory::failAt(0);
    if (memory::hasFailed()) {
      outcome = threw ? Outcome::passedOn : worked ? Outcome::succeeded : Outcome::refused;
    }
    return worked;
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
    text += std::to_string(handles.at(place)) + " ";
    hasHandles = true;
  }

  static bool cycleToOp() {
    std::uint32_t state = 0;
    for (int left = 300; left > 0 && state != 8; --left) {
      igh_master_exchange(0, nullptr, nullptr);
      igh_master_get_state(0, &state);
    }
    return state == 8;
  }

  void transfer() {
    std::array<bool, 3> done{};
    double count = 0;
    const std::array<std::uint8_t, 2> object{5, 6};
    bus().setInputs(1, {1, 2, 3, 4});
    step("exchange", [&] {
      for (std::size_t i = 0; i < 17; ++i) {
        igh_master_pdo_send(0, handles.at(i), static_cast<double>(i) + 1);
      }
      igh_master_sdo_recv(0, requests[0], &count, &done[0]);
      igh_master_sdo_send(0, requests[0], 0x0403, &done[1]);
      igh_master_raw_sdo_send(0, requests[1], object.data(), 2, &done[2]);
      for (int i = 0; i < 40; ++i) {
        igh_master_exchange(0, nullptr, nullptr);
      }
      return done[0] && done[1] && done[2];
    });
    text += testing::PrintToString(bus().outputs(0)) + std::to_string(count) + " " +
            std::to_string(value(handles[17])) + testing::PrintToString(bus().objectValue(0, 0x2000, 1)) +
            testing::PrintToString(bus().objectValue(0, 0x2000, 2)) + "\n";
  }

  std::unique_ptr<Output> output;
  std::vector<std::string> paths;
  std::string text;
  std::array<std::uint32_t, 18> handles{};
  std::array<std::uint32_t, 2> requests{};
  std::size_t target = 0;
  std::size_t nth = 0;
  std::size_t steps = 0;
  bool hasHandles = false;
  const char* stepName = "";
  Outcome outcome = Outcome::none;
};

} // namespace

TEST_F(Failure, OfOneAllocationIsOverWhenTheCallIsMadeAgain) {
  for (const std::string& content : {std::string(modules), descriptionOf({wide()})}) {
    paths.push_back(testing::TempDir() + "/memory." + std::to_string(getpid()) + "." +
                    std::to_string(paths.size()));
    std::ofstream(paths.back()) << content;
  }
  constexpr std::size_t never = ~std::size_t{0};
  text.reserve(100000);
  live(never, 0);
  const std::string expected = text;
  const std::size_t stepCount = steps;
  std::map<std::string, std::map<Outcome, unsigned int>> tries;
  for (std::size_t step = 0; step < stepCount; ++step) {
    for (std::size_t allocation = 1;; ++allocation) {
      const std::size_t before = memory::pieces();
      live(step, allocation);
      ASSERT_EQ(text, expected) << stepName << " (step " << step << "), allocation " << allocation;
      ASSERT_EQ(memory::pieces(), before) << stepName << " (step " << step << "), allocation " << allocation;
      if (outcome == Outcome::none) {
        break;
      }
      ++tries[stepName][outcome];
    }
  }
  for (auto& [name, outcomes] : tries) {
    std::printf("%-12s passed on %4u, refused %4u, succeeded %4u\n", name.c_str(),
                outcomes[Outcome::passedOn], outcomes[Outcome::refused], outcomes[Outcome::succeeded]);
  }
  for (const std::string& path : paths) {
    unlink(path.c_str());
  }
}
