// What the exported functions make of it: the result of a failed access is 1 all the same.
#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, EscRegistersAndStatesOfSingleSlavesGoThroughTheDeviceFile) {
  bus(1).failNext(Call::deviceOpen);
  start({byteIo}, {1});
  startInOp({byteIo, byteIo, byteIo});
  Bytes bytes{7, 7};
  for (const std::uint16_t id : {std::uint16_t{1}, std::uint16_t{0}}) { // without the file nothing happens
    bus(id).setRegisters(0, 0x0300, Bytes(21, 2));
    bus(id).setResponding(1, false);
    const std::string counters = ", address = 300, size = 20";
    const std::string done = "writeEscReg succeed while slave = ";
    const std::string failed =
        "writeEscReg failed while slave = 1" + counters + ", errno = Input/output error\n";
    expectPrint(id == 1 ? "" : done + "0" + counters + "\n" + done + "2" + counters + "\n",
                id == 1 ? "" : failed + failed, [&] {
                  EXPECT_TRUE(igh_master_clear_all_esc_error_regs(id)); // a silent slave stops nobody
                  EXPECT_FALSE(igh_master_clear_esc_error_regs(id, 1));
                  EXPECT_TRUE(igh_master_read_esc_reg(id, 0, 0x0300, bytes.data(), 2));
                  EXPECT_TRUE(igh_master_read_esc_reg(id, 0, 0, nullptr, 4));
                });
    EXPECT_EQ(bytes, id == 1 ? (Bytes{7, 7}) : (Bytes{0, 0}));
    EXPECT_EQ(igh_master_request_esc_state(id, 0, 4), id == 0);
    quietly([&] { EXPECT_TRUE(igh_master_write_esc_reg(id, 0, 0x0120, bytes.data(), 2)); });
  }
  cycleUntil(12); // of all slaves, ORed
}
