// The commands for single slaves, run in this process on a bus whose faults can be set; SDO transfers go by
// the library's requests.
#include "OneDrive.h"
#include "Terminal.h"

using Bytes = std::vector<std::uint8_t>;

namespace {

class Commands : public OneDrive {
protected:
  Commands()
      : OneDrive({{0x2000, 1, {0xFE}},
                  {0x2000, 2, {0, 0, 0xC0, 0x3F}},
                  {0x2000, 3, {0, 0, 0, 0, 0, 0, 4, 0xC0}},
                  {0x2001, 0, {1, 0, 0xFE, 0xFF}},
                  {0x2002, 0, {2}},
                  {0x2002, 1, {0x11, 0x22}},
                  {0x6041, 0, {0x27, 0}, true}}) {}
  static void expect(const std::string& line, int status, const std::string& expected) {
    SCOPED_TRACE(line);
    const bool timed = line.find("--timeout") != std::string::npos;
    // What succeeds does so however long a loaded machine takes.
    const std::string timeout = timed ? "" : status == 0 ? " --timeout 100" : " --timeout 0.3";
    const auto [ended, out, err] =
        runHere(line + (line[0] == 's' ? " --through-library --eni @servo_drive.xml" + timeout : ""));
    EXPECT_EQ(ended, status);
    EXPECT_TRUE(status != 0 || out == expected + "\n") << out;
    EXPECT_THAT(err, testing::HasSubstr(status == 0 ? "" : expected));
    // The IgH library adds one line for each try of a request that is too short.
    const std::string said = std::regex_replace(err, std::regex("Received [^\n]*\n"), "");
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), status == 0 ? 0 : 1) << err;
  }
};

TEST_F(Commands, SdoReadShowsNumbersOfEachTypeAndBytes) {
  expect("sdo read 0 0x6041:0", 0, "0x6041:00 = 39 (0x0027)"); // the description knows the type
  expect("sdo read 0 0x2000:1 --type SINT", 0, "0x2000:01 = -2 (0xFE)");
  expect("sdo read 0 8193 --type udint", 0, "0x2001:00 = 4294836225 (0xFFFE0001)");
  expect("sdo read 0 0x2000:3 --type LREAL", 0, "0x2000:03 = -2.5");
  expect("sdo read 0 0x2000:3 --raw --count 8", 0, "0x2000:03 = 00 00 00 00 00 00 04 C0");
  expect("sdo read 0 0x2001 --type INT --count 2", 0, "0x2001:00 = 1 (0x0001), -2 (0xFFFE)");
  expect("sdo read 0 0x2002 --complete --count 4", 0, "0x2002 = 02 00 11 22");
}

TEST_F(Commands, SdoWriteReachesTheSlave) {
  expect("sdo write 0 0x2000:1 -128 --type SINT", 0, "0x2000:01 set to -128 (0x80)");
  EXPECT_EQ(bus().objectValue(0, 0x2000, 1), (Bytes{0x80}));
  expect("sdo write 0 0x2001 0x10 -1 --type INT", 0, "0x2001:00 set to 16 (0x0010), -1 (0xFFFF)");
  EXPECT_EQ(bus().objectValue(0, 0x2001, 0), (Bytes{0x10, 0, 0xFF, 0xFF}));
  expect("sdo write 0 0x2002 '02 00' 3344 --complete", 0, "0x2002 set to 02 00 33 44");
  EXPECT_EQ(bus().objectValue(0, 0x2002, 1), (Bytes{0x33, 0x44}));
  bus().setMaximumState(0, 2); // refuses the climb, and with it all requests, until the bus is let go
  expect("sdo write 0 0x2000:2 -2 --type REAL --timeout 0.3", 0, "0x2000:02 set to -2");
  EXPECT_EQ(bus().objectValue(0, 0x2000, 2), (Bytes{0, 0, 0, 0xC0}));
  expect("sdo read 0 0x2000:0x2 --type REAL --timeout 0.3", 0, "0x2000:02 = -2");
}

TEST_F(Commands, SdoFailuresAreExplainedInPlainWords) {
  expect("sdo write 0 0x6041 1", 3,
         "igh_bus: slave 0 refused 0x6041:00: attempt to write a read-only object (abort 0x06010002)\n");
  expect("sdo read 0 0x3000 --type INT", 3, "object does not exist in the object dictionary (abort");
  expect("sdo write 0 0x2001 01 --raw", 3, "length does not match (abort 0x06070010)");
  expect("sdo read 0 0x6041 --type UDINT", 3, "answered 2 bytes for 0x6041:00, asked for 4: wrong --type");
  expect("sdo read 0 0x2002 --complete --count 3", 3, "longer than --count");
  expect("sdo write 0 0x2002 '02 00' --complete", 3, "refused 0x2002: data type or length");
  bus().setSdoFault(0, 0x2000, 1, SdoFault::timeOut);
  expect("sdo write 0 0x2000:1 1 --type SINT", 3, "slave 0 did not answer for 0x2000:01 within ");
  bus().setSdoFault(0, 0x2000, 1, SdoFault::longAnswer);
  expect("sdo read 0 0x2000:1 --type SINT", 3, "answered 2 bytes");
}

TEST_F(Commands, WrongArgumentsAreRefusedBeforeAnythingIsSent) {
  bus().addSlave(Slave{});
  expect("sdo read 2 0x6041", 2, "slave 2: the bus has slaves 0 to 1");
  expect("sdo read 1 0x6041", 2, "slave 1 has no description");
  expect("sdo read 0 6O41", 2, "index '6O41'");
  expect("sdo read 0 0x6041:256", 2, "sub-index 256: the highest is 255");
  expect("sdo read 0 0x2000:1", 2, "gives no type");
  expect("sdo read 0 0x2000:1 --type LINT", 2, "use --raw");
  expect("sdo read 0 0x2000:1 --raw", 2, "--count");
  expect("sdo read 0 0x2002:1 --complete --count 2", 2, "whole object");
  expect("sdo write 0 0x6040 65536", 2, "UINT holds 0 to 65535");
  expect("sdo write 0 0x2000:2 nan --type REAL", 2, "value nan is not a number");
  expect("sdo write 0 0x6040 1.5", 2, "whole numbers");
  expect("sdo write 0 0x2001 012 --raw", 2, "pairs of hexadecimal digits");
  expect("reg read 0 0xFFFF 2", 2, "length 2: registers end at 0xFFFF, so from 0xFFFF on at most 1");
  expect("reg read 0 0xFFFF 0", 2, "length 0: at least 1 byte");
  expect("reg write 0 0x0120 2 8", 2, "zeros only");
  EXPECT_EQ(bus().callCount(Call::activate) + bus().callCount(Call::deviceIoctl), 0U);
}

TEST_F(Commands, RegistersAndErrorCountersAreShownAndCleared) {
  bus().setRegisters(0, 0x0300, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
  expect("reg read 0 0x0302 2", 0, "0x0302: 03 04 = 1027 (0x0403)");
  std::string table =
      "slave  port  CRC/invalid frame  RX/physical error  forwarded  lost link  processing unit  PDI"
      "\n    0     0                  1                  2          9         17               13   14"
      "\n    0     1                  3                  4         10         18"
      "\n    0     2                  5                  6         11         19"
      "\n    0     3                  7                  8         12         20";
  expect("errors", 0, table);
  expect("errors --clear", 0, table + "\nAll counters are cleared.");
  EXPECT_EQ(bus().registers(0, 0x0300, 20), Bytes(20));
  bus().setRegisters(0, 0x0F00, {0xA5, 0xFF}); // the first is what the program fills its buffer with
  expect("reg read 0 0x0F00", 0, "0x0F00: A5 = 165 (0xA5)");
  expect("reg write 0 0x0F01 --yes", 0, "0x0F01: zeros written to 1 byte of slave 0");
  EXPECT_EQ(bus().registers(0, 0x0F00, 2), (Bytes{0xA5, 0}));
  for (const char* line : {"reg read 0 0x0F00", "reg write 0 0x0F00 --yes", "errors"}) {
    bus().failNext(Call::deviceIoctl, -EIO);
    expect(line, 3, "slave 0, register 0x0");
    bus().failNext(Call::deviceIoctl, -EINTR);
    expect(line, 3, "an application holds the master and does not cycle");
    bus().failNext(Call::deviceOpen, -EACCES);
    bus().failNext(Call::deviceOpen, -EACCES); // for reading only, too
    expect(line, 3, "/dev/EtherCAT0 cannot be opened: Permission denied");
  }
  bus().failNext(Call::deviceOpen, -EACCES);
  expect("reg write 0 0x0F00 --yes", 3, "needs the right to write /dev/EtherCAT0");
  EXPECT_EQ(bus().callCount(Call::requestMaster), 0U); // beside an application
}

TEST_F(Commands, RegWriteAsksAndWritesForAYesOnly) {
  Person person;
  bus().setRegisters(0, 0x0F00, {7});
  expect("reg write 0 0x0F00", 2,
         "from 0x0F00 on of slave 0 (EM500)? There is no terminal to answer on: use --yes");
  for (const auto& [answer, left] : {std::pair("n\n", 7), {"\n", 7}, {"yes\n", 0}}) {
    person.types(answer);
    const auto [status, out, err] = runHere("reg write 0 0x0F00");
    EXPECT_EQ(bus().registers(0, 0x0F00, 1)[0], left) << answer;
    EXPECT_EQ(status, 0);
    EXPECT_THAT(out, testing::HasSubstr(left ? "Nothing was written" : "zeros written to 1 byte of slave 0"));
    EXPECT_EQ(err, "igh_bus: really write zeros to 1 byte from 0x0F00 on of slave 0 (EM500)? [y/N] ");
  }
}

} // namespace
