// A bus, the description file that matches it and the library between them; every test drives the exported
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

struct Field {
  std::string name;
  std::string type = ""; // empty: a gap
  unsigned int bits = 0; // 0: as wide as the type
};

// Outputs lie in sync manager 2, PDO 0x1600, object 0x7000; inputs in 3, 0x1A00, 0x6000; subindex = place
// from 1.
struct Device {
  std::uint32_t productCode = 0;
  std::vector<Field> outputs = {};
  std::vector<Field> inputs = {};
  std::string extra = ""; // more XML inside the Device element
  bool described = true;
};

inline const Device byteIo{0x10, {{"Out", "USINT"}}, {{"In", "USINT"}}};
inline const Device switcher{0x99, {}, {}, "", false};

ethercat_simulation::Slave slaveOf(const Device& device);

struct Printed {
  std::string out;
  std::string err;
};
// Everything that reaches the two descriptors meanwhile.
Printed capture(const std::function<void()>& run);

// Target of the error callback; recording allocates nothing.
class Errors {
public:
  static void record(unsigned int device, unsigned int slave, int code, void* errors);
  // "device/slave/code" of each, * for the master as a whole, and forgets them.
  std::string take();

private:
  std::array<std::array<unsigned int, 3>, 256> m_list{};
  std::size_t m_count = 0;
};

struct MasterOptions {
  std::uint16_t id = 0;
  std::uint32_t period = 1000000;
  bool enableDc = false;
  bool syncToReferenceClock = false;
};

class Scenario : public testing::Test {
protected:
  Scenario();
  // Ends every master and demands that the library misused no handle and kept the order of calls.
  ~Scenario() override;

  // Bus and description file from one source; the master is initialised and has the file.
  void build(const std::vector<Device>& devices, const MasterOptions& options = {});
  bool describe(const std::vector<Device>& devices, std::uint16_t id = 0);
  // scan, configure, activate
  Printed bringUp(std::uint16_t id = 0);
  void start(const std::vector<Device>& devices, const MasterOptions& options = {});
  void cycle(unsigned int count = 1, std::uint16_t id = 0);
  void cycleWith(const std::function<void()>& callback, std::uint16_t id = 0);
  void cycleUntil(std::uint32_t state, std::uint16_t id = 0);
  std::string errorsOf(unsigned int cycles);

  std::uint32_t handle(std::uint32_t slave, const std::string& name, bool read, std::uint16_t id = 0);
  double value(std::uint32_t handle, std::uint16_t id = 0);
  // Names of the traced calls without the prefix; and one call in full.
  std::string calls(Bus& of = bus());
  std::string callText(Call call, Bus& of = bus());

  Errors errors;
  std::set<std::uint16_t> masters{0};
  bool outOfOrderExpected = false;
};

} // namespace scenario
