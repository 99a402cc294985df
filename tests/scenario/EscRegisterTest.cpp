#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, EscRegistersAreReadAndClearedThroughTheDeviceFile) {
  startInOp({byteIo, byteIo, byteIo});
  Bytes bytes(4, 0x55);
  EXPECT_TRUE(igh_master_read_esc_reg(0, 1, 0x0000, bytes.data(), 4));
  EXPECT_EQ(bytes, (Bytes{4, 3, 1, 3}));
  EXPECT_TRUE(igh_master_read_esc_reg(0, 1, 0x0130, bytes.data(), 2));
  EXPECT_EQ(bytes, (Bytes{8, 0, 1, 3}));

  // Whatever is written, zeros arrive, and the buffer is cleared.
  const std::string succeeded = "writeEscReg succeed while slave = ";
  bus().setRegisters(0, 0x0120, {5, 6, 7});
  expectPrint(succeeded + "0, address = 120, size = 2\n", "",
              [&] { EXPECT_TRUE(igh_master_write_esc_reg(0, 0, 0x0120, bytes.data(), 2)); });
  EXPECT_EQ(bytes, (Bytes{0, 0, 1, 3}));
  EXPECT_EQ(bus().registers(0, 0x0120, 3), (Bytes{0, 0, 7}));

  // Errors of the bus are cleared by slave or for all; a silent slave stops nobody.
  for (unsigned int slave = 0; slave < 3; ++slave) {
    bus().setRegisters(slave, 0x0300, Bytes(21, 2));
  }
  bus().setResponding(1, false);
  const std::string failed =
      "writeEscReg failed while slave = 1, address = 300, size = 20, errno = Input/output error\n";
  const std::string counters = ", address = 300, size = 20\n";
  expectPrint(succeeded + "0" + counters + succeeded + "2" + counters, failed,
              [] { EXPECT_TRUE(igh_master_clear_all_esc_error_regs(0)); });
  Bytes cleared(21);
  cleared.back() = 2;
  EXPECT_EQ(bus().registers(2, 0x0300, 21), cleared);
  expectPrint("", failed, [] { EXPECT_FALSE(igh_master_clear_esc_error_regs(0, 1)); });
  bus().setResponding(1, true);
  quietly([] { EXPECT_TRUE(igh_master_clear_esc_error_regs(0, 1)); });
  EXPECT_EQ(bus().registers(1, 0x0300, 21), cleared);

  // The result of a failed access is 1 all the same, and what was read is 0.
  bytes = {1, 2, 3};
  expectPrint("", "EscRegRead failed while slave = 9, address = ab0, size = 2, errno = Invalid argument\n",
              [&] {
                EXPECT_TRUE(igh_master_read_esc_reg(0, 9, 0x0AB0, bytes.data(), 2));
                EXPECT_TRUE(igh_master_read_esc_reg(0, 9, 0, nullptr, 0));
                EXPECT_TRUE(igh_master_read_esc_reg(0, 0, 0, nullptr, 4));
                EXPECT_TRUE(igh_master_write_esc_reg(0, 0, 0, nullptr, 4));
              });
  EXPECT_EQ(bytes, (Bytes{0, 0, 3}));
}

TEST_F(Scenario, StateRequestsTakeEffectAndNothingHappensWithoutTheDeviceFile) {
  startInOp({byteIo});
  EXPECT_TRUE(igh_master_request_esc_state(0, 0, 4));
  cycleUntil(4);
  bus().setErrorFlag(0, true);
  EXPECT_NE(errorsOf(1), "");
  EXPECT_TRUE(igh_master_request_esc_state(0, 0, 8));
  cycleUntil(8);
  EXPECT_EQ(errorsOf(1), "");
  expectPrint("", "Failed to request slave state: slave = 9, state = 8, errno = Invalid argument\n",
              [] { EXPECT_FALSE(igh_master_request_esc_state(0, 9, 8)); });

  bus(1).failNext(Call::deviceOpen);
  start({byteIo}, {1});
  Bytes bytes{7, 7};
  expectPrint("", "", [&] {
    EXPECT_TRUE(igh_master_read_esc_reg(1, 0, 0, bytes.data(), 2));
    EXPECT_TRUE(igh_master_write_esc_reg(1, 0, 0, bytes.data(), 2));
    EXPECT_FALSE(igh_master_clear_esc_error_regs(1, 0));
    EXPECT_TRUE(igh_master_clear_all_esc_error_regs(1));
    EXPECT_FALSE(igh_master_request_esc_state(1, 0, 1));
  });
  EXPECT_EQ(bytes, (Bytes{7, 7}));
  EXPECT_EQ(bus(1).callCount(Call::deviceIoctl), 0U);
}
