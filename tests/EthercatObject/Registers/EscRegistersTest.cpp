#include "EthercatObject/Registers/EscRegisters.h"

#include "EthercatObject/Platform.h"

#include <fcntl.h>
#include <unistd.h>

using namespace runtime_test;

namespace {

TEST_F(Platform, EscRegistersAreReadAndOnlyEverReceiveZeros) {
  const int device = open("/dev/EtherCAT0", O_RDWR);
  const CEscRegisters registers(device);
  Bytes bytes(4, 0x55);
  bus().setRegisters(1, 0x0120, {5, 6, 7, 8});
  EXPECT_EQ(textOf([&] { EXPECT_TRUE(registers.read(1, 0x0120, bytes.data(), 3)); }), "");
  EXPECT_EQ(bytes, (Bytes{5, 6, 7, 0x55}));
  EXPECT_EQ(textOf([&] { EXPECT_TRUE(registers.write(1, 0x0120, bytes.data(), 2)); }),
            "writeEscReg succeed while slave = 1, address = 120, size = 2\n");
  EXPECT_EQ(bytes, (Bytes{0, 0, 7, 0x55}));
  EXPECT_EQ(bus().registers(1, 0x0120, 4), (Bytes{0, 0, 7, 8}));
  bus().setRegisters(0, 0x0300, Bytes(21, 2));
  EXPECT_EQ(textOf([&] { EXPECT_TRUE(registers.clearErrors(0)); }),
            "writeEscReg succeed while slave = 0, address = 300, size = 20\n");
  Bytes cleared(21);
  cleared.back() = 2;
  EXPECT_EQ(bus().registers(0, 0x0300, 21), cleared);

  EXPECT_EQ(textOf([&] { EXPECT_FALSE(registers.read(9, 0x0AB0, &bytes[2], 2)); }),
            "EscRegRead failed while slave = 9, address = ab0, size = 2, errno = Invalid argument\n");
  EXPECT_EQ(bytes, Bytes(4)) << "what could not be read is 0";
  bus().setResponding(1, false);
  EXPECT_EQ(textOf([&] { EXPECT_FALSE(registers.clearErrors(1)); }),
            "writeEscReg failed while slave = 1, address = 300, size = 20, errno = Input/output error\n");
  EXPECT_EQ(textOf([&] { EXPECT_FALSE(registers.requestState(9, 8)); }),
            "Failed to request slave state: slave = 9, state = 8, errno = Invalid argument\n");
  const std::uint64_t calls = bus().callCount(Call::deviceIoctl);
  EXPECT_FALSE(registers.read(0, 0, nullptr, 4) || registers.write(0, 0, nullptr, 4));
  EXPECT_EQ(bus().callCount(Call::deviceIoctl), calls);
  close(device);
}

} // namespace
