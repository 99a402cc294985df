#include "Fixture.h"

namespace scenario {
namespace {

TEST_F(Scenario, EscRegistersAreReadAndClearedThroughTheDeviceFile) {
  startInOp({byteIo, byteIo, byteIo});
  Bytes bytes(4, 0x55);
  EXPECT_TRUE(igh_master_read_esc_reg(0, 1, 0x0000, bytes.data(), 4));
  EXPECT_EQ(bytes, (Bytes{4, 3, 1, 3}));
  EXPECT_TRUE(igh_master_read_esc_reg(0, 1, 0x0130, bytes.data(), 2));
  EXPECT_EQ(bytes, (Bytes{8, 0, 1, 3}));

  // Whatever is written, zeros arrive, and the buffer is cleared.
  bus().setRegisters(0, 0x0120, {5, 6, 7});
  bytes = {0x12, 0x34};
  const Printed written =
      capture([&] { EXPECT_TRUE(igh_master_write_esc_reg(0, 0, 0x0120, bytes.data(), 2)); });
  EXPECT_EQ(written.out, "writeEscReg succeed while slave = 0, address = 120, size = 2\n");
  EXPECT_EQ(bytes, (Bytes{0, 0}));
  EXPECT_EQ(bus().registers(0, 0x0120, 3), (Bytes{0, 0, 7}));

  // Errors of the bus count, and are cleared by slave or for all; a silent slave stops nobody.
  bus().dropFrames(2);
  cycle(2);
  bus().setResponding(1, false);
  Bytes counters(20);
  EXPECT_TRUE(igh_master_read_esc_reg(0, 0, 0x0300, counters.data(), 20));
  EXPECT_EQ(counters[0], 2);
  EXPECT_EQ(bus().registers(2, 0x0308, 1), Bytes{2});
  EXPECT_EQ(bus().registers(1, 0x030D, 1), Bytes{1});
  const std::string succeeded = "writeEscReg succeed while slave = ";
  const std::string failed =
      "writeEscReg failed while slave = 1, address = 300, size = 20, errno = Input/output error\n";
  Printed cleared = capture([] { EXPECT_TRUE(igh_master_clear_all_esc_error_regs(0)); });
  EXPECT_EQ(cleared.out,
            succeeded + "0, address = 300, size = 20\n" + succeeded + "2, address = 300, size = 20\n");
  EXPECT_EQ(cleared.err, failed);
  EXPECT_EQ(bus().registers(2, 0x0300, 20), Bytes(20, 0));
  cleared = capture([] { EXPECT_FALSE(igh_master_clear_esc_error_regs(0, 1)); });
  EXPECT_EQ(cleared.err, failed);
  bus().setResponding(1, true);
  capture([] { EXPECT_TRUE(igh_master_clear_esc_error_regs(0, 1)); });
  EXPECT_EQ(bus().registers(1, 0x0300, 20), Bytes(20, 0));

  // The result of a failed access is 1 all the same, and what was read is 0.
  bytes = {1, 2, 3};
  const Printed bad = capture([&] {
    EXPECT_TRUE(igh_master_read_esc_reg(0, 9, 0x0AB0, bytes.data(), 2));
    EXPECT_TRUE(igh_master_read_esc_reg(0, 9, 0, nullptr, 0));
    EXPECT_TRUE(igh_master_read_esc_reg(0, 0, 0, nullptr, 4));
    EXPECT_TRUE(igh_master_write_esc_reg(0, 0, 0, nullptr, 4));
  });
  EXPECT_EQ(bytes, (Bytes{0, 0, 3}));
  EXPECT_EQ(bad.err,
            "EscRegRead failed while slave = 9, address = ab0, size = 2, errno = Invalid argument\n");
  EXPECT_EQ(bad.out, "");
}

TEST_F(Scenario, StateRequestsTakeEffectAndNothingHappensWithoutTheDeviceFile) {
  build({byteIo});
  EXPECT_TRUE(igh_master_request_esc_state(0, 0, 1));
  EXPECT_EQ(bus().alState(0), 1);
  bringUp();
  cycleUntil(8);
  EXPECT_TRUE(igh_master_request_esc_state(0, 0, 4));
  EXPECT_EQ(bus().alState(0), 8); // needs cycles
  cycleUntil(4);
  bus().setErrorFlag(0, true);
  EXPECT_NE(errorsOf(1), "");
  EXPECT_TRUE(igh_master_request_esc_state(0, 0, 8));
  cycleUntil(8);
  EXPECT_EQ(errorsOf(1), "");
  const Printed refused = capture([] { EXPECT_FALSE(igh_master_request_esc_state(0, 9, 8)); });
  EXPECT_EQ(refused.err, "Failed to request slave state: slave = 9, state = 8, errno = Invalid argument\n");

  masters.insert(1);
  bus(1).failNext(Call::deviceOpen, -EACCES);
  start({byteIo}, {1});
  std::uint8_t bytes[2] = {7, 7};
  const Printed silent = capture([&] {
    EXPECT_TRUE(igh_master_read_esc_reg(1, 0, 0, bytes, 2));
    EXPECT_TRUE(igh_master_write_esc_reg(1, 0, 0, bytes, 2));
    EXPECT_FALSE(igh_master_clear_esc_error_regs(1, 0));
    EXPECT_TRUE(igh_master_clear_all_esc_error_regs(1));
    EXPECT_FALSE(igh_master_request_esc_state(1, 0, 1));
  });
  EXPECT_EQ(silent.out + silent.err, "");
  EXPECT_EQ(bytes[0] + bytes[1], 14);
  EXPECT_EQ(bus(1).callCount(Call::deviceIoctl), 0U);
}

} // namespace
} // namespace scenario
