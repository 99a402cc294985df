// What the tests of SDO requests share: a slave with objects, and the course of the transfers as a line of
// text.
#pragma once

#include "Fixture.h"

namespace scenario {

using ethercat_simulation::SdoFault;

inline const Device drive = [] {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {1, 0}},
                    {0x2000, 2, {2, 0}},
                    {0x2000, 3, {3, 0}},
                    {0x3000, 0, {2}},
                    {0x3000, 1, {0x11, 0x22}},
                    {0x3000, 2, {0x33, 0x44}},
                    {0x4000, 0, {0xFE, 0xFF, 5, 0}}};
  return device;
}();

class SdoTest : public Scenario {
protected:
  // Between configuration and activation.
  void prepare() {
    build({drive});
    capture([] {
      igh_master_scan(0, nullptr);
      igh_master_config_all_slave(0);
    });
  }
  static std::uint32_t create(std::uint16_t index, std::uint8_t subindex, bool read,
                              ETHERCAT_DATA_TYPE type = DATA_TYPE_UINT, std::uint32_t count = 1) {
    std::uint32_t id = 0xEEEE;
    EXPECT_TRUE(igh_master_create_sdo_request_ex(0, 0, index, subindex, type, count, 500, read, &id));
    return id;
  }
  void toOp() {
    capture([this] {
      EXPECT_TRUE(igh_master_active(0));
      cycleUntil(8);
    });
  }
  // What happened to which subindex in each cycle: r or w for issued, . for busy, = for done, ! for failed
  // and issued again; - for nothing.
  std::string steps(unsigned int cycles) {
    std::string text;
    bus().setTracing(true);
    while (cycles-- > 0) {
      bus().clearTrace();
      cycle();
      char issued = 0;
      std::string step = "-";
      for (const ethercat_simulation::TraceEntry& entry : bus().trace()) {
        if (entry.call == Call::sdoState) {
          EXPECT_EQ(step, "-") << "one look per step, and before the issue";
          step = std::string(1, entry.text[entry.text.find(')') - 1]) + "=.=!"[entry.text.back() - '0'];
        }
        issued = entry.call == Call::sdoRead ? 'r' : entry.call == Call::sdoWrite ? 'w' : issued;
      }
      if (issued != 0 && step.back() == '=') {
        step.back() = issued;
      }
      text += (text.empty() ? "" : " ") + step;
    }
    bus().setTracing(false);
    return text;
  }
  // A read of request 0 leaves the cursor behind its read phase.
  void home() {
    bool done = false;
    double value = 0;
    EXPECT_TRUE(igh_master_sdo_recv(0, 0, &value, &done));
    while (!done) {
      cycle();
    }
  }
};

} // namespace scenario
