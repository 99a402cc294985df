// A bus, the description file that matches it, and the library between them, driven through its exported
// functions.
#pragma once

#include <array>
#include <ethercat_simulation/Simulation.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <igh_master.h>
#include <set>
#include <string>
#include <vector>

namespace scenario {

using ethercat_simulation::Bus;
using ethercat_simulation::bus;
using ethercat_simulation::Call;
using Bytes = std::vector<std::uint8_t>;

struct Field {
  std::string name; // "gap…": an entry with index 0
  std::string type;
  unsigned int bits = 0; // 0: as wide as the type
};

// Outputs lie in sync manager 2, PDO 0x1600, object 0x7000; inputs in 3, 0x1A00, 0x6000; subindex = place
// from 1.
struct Device {
  std::uint32_t productCode = 0;
  std::vector<Field> outputs = {};
  std::vector<Field> inputs = {};
  std::string extra = {}; // more XML inside the Device element
  bool described = true;
  std::vector<ethercat_simulation::Object> objects = {};
  std::uint16_t alias = 0;
};

inline const Device byteIo{0x10, {{"Out", "USINT"}}, {{"In", "USINT"}}};
inline const Device clocked{0x30, byteIo.outputs, byteIo.inputs,
                            "<Dc><OpMode><Name>Free</Name></OpMode><OpMode><Name>DC</"
                            "Name><AssignActivate>#x0300</AssignActivate></OpMode></Dc>"};
inline const Device switcher{0x99, {}, {}, "", false};

ethercat_simulation::Slave slaveOf(const Device& device);
std::string descriptionOf(const std::vector<Device>& devices);
// Everything that reaches the two descriptors meanwhile.
struct Printed {
  std::string out;
  std::string err;
};
Printed capture(const std::function<void()>& run);
// The same, compared.
void expectPrint(const std::string& out, const std::string& err, const std::function<void()>& run);
void quietly(const std::function<void()>& run);

struct MasterOptions {
  std::uint16_t id = 0;
  std::uint32_t period = 1000000;
  bool enableDc = false;
  bool syncToReferenceClock = false;
  bool exchangeMode = false;
};

class Scenario : public testing::Test {
protected:
  Scenario();
  // Ends every master and demands that the library misused no handle and kept the order of calls.
  ~Scenario() override { startOver(); }
  void startOver(); // for the next round of a test on new masters

  // Bus and description file from one source; the master is initialised and has the file.
  void build(const std::vector<Device>& devices, const MasterOptions& options = {});
  bool describe(const std::vector<Device>& devices, std::uint16_t id = 0);
  static void configure(std::uint16_t id = 0) { // scan and configure
    quietly([id] {
      EXPECT_TRUE(igh_master_scan(id, nullptr));
      EXPECT_TRUE(igh_master_config_all_slave(id));
    });
  }
  static void bringUp(std::uint16_t id = 0) { // and activate
    configure(id);
    quietly([id] { EXPECT_TRUE(igh_master_active(id)); });
  }
  void start(const std::vector<Device>& devices, const MasterOptions& options = {}) { // build and bring up
    build(devices, options);
    bringUp(options.id);
  }
  void startInOp(const std::vector<Device>& devices,
                 const MasterOptions& options = {}) { // and cycle until OP
    start(devices, options);
    cycleUntil(8, options.id);
  }
  static void cycle(unsigned int count = 1, std::uint16_t id = 0) {
    while (count-- > 0) {
      EXPECT_TRUE(igh_master_exchange(id, nullptr, nullptr));
    }
  }
  static void cycleWith(std::function<void()> callback) {
    const auto call = [](void* function) { (*static_cast<std::function<void()>*>(function))(); };
    igh_master_exchange(0, call, &callback);
  }
  static void cycleUntil(std::uint32_t state, std::uint16_t id = 0) {
    for (int left = 200; left > 0 && stateOf(id) != state; --left) {
      cycle(1, id);
    }
    ASSERT_EQ(stateOf(id), state);
    cycle(2, id); // until inputs and working counter are those of this state
  }
  static std::uint32_t stateOf(std::uint16_t id = 0) {
    std::uint32_t state = 99;
    igh_master_get_state(id, &state);
    return state;
  }
  static _ETHERCAT_COMM_DIAG_INFO lastCycle() {
    _ETHERCAT_COMM_DIAG_INFO last{};
    igh_master_get_comm_diag_info(0, COMM_DIAG_LAST, &last);
    return last;
  }
  // "device/slave/code" of each error in these cycles, * for the master as a whole.
  std::string errorsOf(unsigned int cycles, std::uint16_t id = 0) {
    errors.clear();
    cycle(cycles, id);
    return errors;
  }

  static std::uint32_t handle(std::uint32_t slave, const std::string& name, bool read, std::uint16_t id = 0) {
    std::uint32_t handle = 0xFFFFFFFE;
    EXPECT_TRUE(igh_master_create_pdo_info(id, slave, name.c_str(), read, &handle)) << name;
    return handle;
  }
  static void send(std::uint32_t slave, const std::string& name, double value, std::uint16_t id = 0) {
    EXPECT_TRUE(igh_master_pdo_send(id, handle(slave, name, false, id), value));
  }
  static double value(std::uint32_t handle, std::uint16_t id = 0) {
    double value = -1e9;
    EXPECT_TRUE(igh_master_pdo_recv(id, handle, &value));
    return value;
  }
  // Names of the traced calls without the prefix; all traced calls of one kind in full, one a line.
  std::string calls(Bus& of = bus());
  std::string callTexts(Call call, Bus& of = bus());

  std::string errors;
  std::set<std::uint16_t> masters{0};
  std::uint64_t outOfOrderExpected = 0;
};

} // namespace scenario
