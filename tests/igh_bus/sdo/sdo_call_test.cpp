// SDO transfers by the calls that wait, and the list of a slave's objects.
#include "Terminal.h"

#include <ethercat_simulation/Simulation.h>

using namespace ethercat_simulation;
using Bytes = std::vector<std::uint8_t>;

namespace {

Bytes textBytes(const std::string& text) {
  return {text.begin(), text.end()};
}

class SdoCall : public testing::Test {
protected:
  void SetUp() override {
    reset();
    Slave slave;
    std::tie(slave.vendorId, slave.productCode, slave.revisionNumber) = std::tuple(0x0B0BU, 0x500U, 0x20001U);
    slave.name = "EM500";
    slave.objects = {{0x1000, 0, {0x92, 1, 2, 0}},
                     {0x1008, 0, textBytes("EM500")},
                     {0x1018, 0, {2}},
                     {0x1018, 1, {0x0B, 0x0B, 0, 0}},
                     {0x1018, 2, {0, 5, 0, 0}},
                     {0x1600, 0, {1}},
                     {0x1600, 1, {0x20, 0, 0x01, 0x20}},
                     {0x2000, 1, {0xFE}}, // without sub-index 0
                     {0x2000, 2, {1}},
                     {0x2001, 0, {0, 0, 0, 0, 0, 0, 0, 0x80}},
                     {0x2002, 0, textBytes("V1.0")},
                     {0x2003, 0, {5}}, // no number of parts
                     {0x2004, 0, Bytes(5000, 'x')},
                     {0x2005, 0, Bytes((1U << 20) + 1, 0)},
                     {0x2006, 0, {1, 0, 2}},
                     {0x2007, 0, {}},
                     {0x2008, 0, {1, 0, 0, 0, 0xFF, 0xFF}},
                     {0x6040, 0, {0, 0}},
                     {0x6041, 0, {0x27, 0}, true},
                     {0x60FD, 0, {0, 0, 0, 0}},
                     {0x7000, 0, {1}}};
    bus().addSlave(slave);
    slave.coe = false;
    bus().addSlave(slave);
  }
  void TearDown() override {
    EXPECT_EQ(bus().misuse().total(), 0U) << testing::PrintToString(bus().misuse().lines);
    EXPECT_EQ(bus().callCount(Call::requestMaster), 0U);
    reset();
  }
  static void expect(const std::string& line, const std::string& expected, int expectedStatus = 0) {
    const auto [status, out, err] = runHere("sdo " + line);
    EXPECT_EQ(status, expectedStatus) << line << ": " << err;
    EXPECT_THAT(status == 0 ? out : err, testing::HasSubstr(expected + (status == 0 ? "\n" : ""))) << line;
  }
};

TEST_F(SdoCall, ReadsOnceAndShowsWhatTheLengthAllows) {
  const std::pair<const char*, const char*> cases[] = {
      {"read 0 0x2000:1", "0x2000:01 = FE (254, signed -2)"},
      {"read 0 0x6041", "0x6041:00 = 27 00 (39)"},
      {"read 0 0x2001",
       "0x2001:00 = 00 00 00 00 00 00 00 80 (9223372036854775808, signed -9223372036854775808)"},
      {"read 0 0x2001 --type lint", "0x2001:00 = -9223372036854775808 (0x8000000000000000)"},
      {"read 0 0x2001 --type ULINT", "0x2001:00 = 9223372036854775808 (0x8000000000000000)"},
      {"read 0 0x1008", "0x1008:00 = \"EM500\""},
      {"read 0 0x1008 --raw", "0x1008:00 = 45 4D 35 30 30"},
      {"read 0 0x2002", "0x2002:00 = 56 31 2E 30 (808333654, \"V1.0\")"},
      {"read 0 0x2002 --type STRING", "0x2002:00 = \"V1.0\""},
      {"read 0 0x2006 --type STRING", "0x2006:00 = \"\\x01\\x00\\x02\""},
      {"read 0 0x2006", "0x2006:00 = 01 00 02"},
      {"read 0 0x2007", "0x2007:00 = no bytes"},
      {"read 0 0x2000:2 --type BOOL", "0x2000:02 = true (0x01)"},
      {"read 0 0x2008 --type INT", "0x2008:00 = 1 (0x0001), 0 (0x0000), -1 (0xFFFF)"},
      {"read 0 0x2008 --type INT --count 3", "0x2008:00 = 1 (0x0001), 0 (0x0000), -1 (0xFFFF)"},
      {"read 0 0x6041 --eni @servo_drive.xml", "0x6041:00 = 39 (0x0027)"},
  };
  for (const auto& [line, expected] : cases)
    expect(line, expected);
  EXPECT_EQ(bus().callCount(Call::sdoUpload), std::size(cases));
  expect("read 0 0x2004", '"' + std::string(5000, 'x') + '"');
  bus().setObjectValue(0, 0x6041, 0, {1, 2, 3}); // the description is wrong
  expect("read 0 0x6041 --eni @servo_drive.xml", "0x6041:00 = 01 02 03");
}

TEST_F(SdoCall, WritesExactlyWhatTheTypeHolds) {
  const std::tuple<const char*, std::uint16_t, Bytes> cases[] = {
      {"0x2001 9223372036854775807 --type LINT", 0x2001, {255, 255, 255, 255, 255, 255, 255, 127}},
      {"0x2001 -9007199254740993 --type LINT", 0x2001, {255, 255, 255, 255, 255, 255, 0xDF, 255}},
      {"0x2001 18446744073709551615 --type ULINT", 0x2001, Bytes(8, 255)},
      {"0x2003 true --type BOOL", 0x2003, {1}},
      {"0x1008 'EM 50' --type STRING", 0x1008, textBytes("EM 50")},
      {"0x2006 0A0b0C --raw", 0x2006, {10, 11, 12}},
      {"0x6040 0x10 --eni @servo_drive.xml", 0x6040, {0x10, 0}},
  };
  for (const auto& [line, index, bytes] : cases) {
    EXPECT_EQ(runHere("sdo write 0 " + std::string(line)).status, 0) << line;
    EXPECT_EQ(bus().objectValue(0, index, 0), bytes) << line;
  }
}

TEST_F(SdoCall, WhatCannotBeDoneIsToldInPlainWords) {
  const std::tuple<int, const char*, const char*> cases[] = {
      {3, "write 0 0x6041 1 --type UINT",
       "igh_bus: slave 0 refused 0x6041:00: attempt to write a read-only object (abort 0x06010002)\n"},
      {3, "read 0 0x3000", "object does not exist in the object dictionary (abort 0x06020000)"},
      {3, "read 0 0x6041 --type UDINT", "answered 2 bytes for 0x6041:00, UDINT has 4: wrong --type?"},
      {3, "read 0 0x6041 --type UINT --count 2", "answered 2 bytes for 0x6041:00, asked for 4"},
      {3, "read 0 0x2006 --raw --count 2", "answered 3 bytes for 0x2006:00, asked for 2: wrong --count?"},
      {3, "read 0 0x2005", "slave 0 answered more than 1048576 bytes for 0x2005:00"},
      {3, "read 1 0x1000", "slave 1 has no objects: its mailbox does not speak CoE"},
      {3, "list 1", "slave 1 has no objects"},
      {2, "read 2 0x1000", "slave 2: the bus has slaves 0 to 1"},
      {2, "list 2", "slave 2: the bus has slaves 0 to 1"},
      {2, "list 0 0x2001-0x2000", "the first index is above the last"},
      {2, "read 0 0x1018 --complete", "use --through-library with --count, or 'sdo list SLAVE INDEX'"},
      {2, "read 0 0x1000 --through-library", "--through-library needs --eni"},
      {2, "read 0 0x1000 --through-library --type LINT --eni @servo_drive.xml",
       "cannot convert it; use --raw"},
      {2, "write 0 0x2001 1", "gives no type for 0x2001:00: use --type or --raw"},
      {2, "write 0 0x2001 18446744073709551616 --type ULINT", "ULINT holds 0 to 18446744073709551615"},
      {2, "write 0 0x2001 9223372036854775808 --type LINT",
       "LINT holds -9223372036854775808 to 9223372036854775807"},
      {2, "write 0 0x2001 -1 --type ULINT", "ULINT holds"},
      {2, "write 0 0x2003 2 --type BOOL", "BOOL holds 0, 1, false and true"},
      {2, "write 0 0x1008 two words --type STRING", "put it in quotes"},
      {2, "write 0 0x1008 '' --type STRING", "nothing to write"},
  };
  for (const auto& [status, line, expected] : cases)
    expect(line, expected, status);
  bus().setSdoFault(0, 0x6041, 0, SdoFault::timeOut);
  expect("read 0 0x6041", "slave 0 did not answer for 0x6041:00 within ", 3);
  expect("list 0 0x6040-0x6042", "slave 0 did not answer for 0x6041:00", 3);
  bus().failNext(Call::sdoUpload, -EINTR);
  expect("read 0 0x1000", "an application holds the master and does not cycle", 3);
}

TEST_F(SdoCall, ListHasWhatTheSlaveAnswersForAndWhatItIsCalled) {
  // The description knows a record, an array and a text; of 0x2008 it is wrong.
  const auto description = scratch("dictionary.xml", R"(<EtherCATInfo><Vendor><Id>#xB0B</Id></Vendor>
<Descriptions><Devices><Device><Type ProductCode="#x500" RevisionNo="#x20001">EM500</Type>
<Profile><Dictionary><DataTypes>
<DataType><Name>DT1018</Name><SubItem><SubIdx>0</SubIdx><Name>Parts</Name><Type>USINT</Type></SubItem>
<SubItem><SubIdx>1</SubIdx><Name>Vendor ID</Name><Type>UDINT</Type></SubItem></DataType>
<DataType><Name>A</Name><BaseType>SINT</BaseType><ArrayInfo><LBound>1</LBound><Elements>2</Elements></ArrayInfo></DataType>
<DataType><Name>DT2000</Name><SubItem><SubIdx>0</SubIdx><Name>n</Name><Type>USINT</Type></SubItem>
<SubItem><Name>Elements</Name><Type>A</Type></SubItem></DataType></DataTypes><Objects>
<Object><Index>#x1018</Index><Name>Who</Name><Type>DT1018</Type></Object>
<Object><Index>#x2000</Index><Name>Gains</Name><Type>DT2000</Type></Object>
<Object><Index>#x2002</Index><Name>Version</Name><Type>STRING(4)</Type></Object>
<Object><Index>#x2008</Index><Name>Wrong</Name><Type>DINT</Type></Object>
</Objects></Dictionary></Profile></Device></Devices></Descriptions></EtherCATInfo>)");
  const std::string found = R"(0x1000:00     4  92 01 02 00 (131474)  Device type
0x1008:00     5  "EM500"  Device name
0x1018:00     1  2 (0x02)  Who: Parts
0x1018:01     4  2827 (0x00000B0B)  Who: Vendor ID
0x1018:02     4  00 05 00 00 (1280)  Product
0x2000:01     1  -2 (0xFE)  Gains
0x2000:02     1  1 (0x01)  Gains
0x2002:00     4  "V1.0"  Version
0x2008:00     6  01 00 00 00 FF FF  Wrong
0x6040:00     2  00 00 (0)
0x6041:00     2  27 00 (39)
0x60FD:00     4  00 00 00 00 (0)
)";
  expect("list 0 --eni '" + description + "'",
         found + "12 found in the usual places, asked for one by one: the IgH master hands out no list");
  std::remove(description.c_str());
  // Without a description what a mapping points at is followed. A sub-index that is silent about why is
  // shown.
  bus().setSdoFault(0, 0x2003, 0, SdoFault::abort);
  expect("list 0 0x1600 0x2000-0x2003", R"(0x1600:00     1  01 (1)
0x1600:01     4  20 00 01 20 (536936480)
0x2000:01     1  FE (254, signed -2)
0x2000:02     1  01 (1)
0x2001:00     8  00 00 00 00 00 00 00 80 (9223372036854775808, signed -9223372036854775808)
0x2002:00     4  56 31 2E 30 (808333654, "V1.0")
0x2003:00     -  general error
7 found in these places, asked for one by one: the IgH master hands out no list)");
}

TEST(SdoList, ATerminalSeesWhichObjectIsAskedFor) {
  Terminal terminal("'" IGH_BUS_PROGRAM "' sdo list 5 0x603F-0x6041 0x6502 --bus @machine.json", "linux", 24);
  const auto outcome = terminal.end();
  const std::string cleared = "\r\x1b[K";
  EXPECT_THAT(outcome.out, testing::HasSubstr("\r0x6041" + cleared + "0x6041:00     2  "));
  EXPECT_THAT(outcome.out, testing::HasSubstr("\r0x6502" + cleared));
  EXPECT_EQ(outcome.status, 0);
}

} // namespace
