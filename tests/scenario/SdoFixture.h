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
  void prepare(bool exchangeMode = false) {
    build({drive}, {0, 1000000, false, false, exchangeMode});
    configure();
  }
  static std::uint32_t create(std::uint16_t index, std::uint8_t subindex, bool read,
                              ETHERCAT_DATA_TYPE type = DATA_TYPE_UINT, std::uint32_t count = 1) {
    std::uint32_t id = 0xEEEE;
    EXPECT_TRUE(igh_master_create_sdo_request_ex(0, 0, index, subindex, type, count, 500, read, &id));
    return id;
  }
  static std::uint32_t createWhole() { // to read all of 0x3000
    std::uint32_t id = 0xEEEE;
    EXPECT_TRUE(igh_master_create_raw_sdo_request_complete(0, 0, 0x3000, 6, 700, true, &id));
    return id;
  }
  static std::uint32_t createBothWays() { // the four bytes of 0x4000, raw
    std::uint32_t id = 0xEEEE;
    EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x4000, 0, 4, 0, true, &id));
    EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x4000, 0, 4, 0, false, &id));
    return id;
  }
  void toOp() {
    quietly([] { EXPECT_TRUE(igh_master_active(0)); });
    cycleUntil(8);
  }
  bool read(std::uint32_t id, int at = 0) { return igh_master_sdo_recv(0, id, &values[at], &done[at]); }
  bool write(std::uint32_t id, double value, int at) { return igh_master_sdo_send(0, id, value, &done[at]); }
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
    EXPECT_TRUE(read(0, 3));
    for (int left = 50; left > 0 && !done[3]; --left) {
      cycle();
    }
  }

  double values[4] = {-1, -1, -1, -1};
  bool done[4] = {};
};

} // namespace scenario
