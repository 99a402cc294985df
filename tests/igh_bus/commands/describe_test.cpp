#include "Program.h"

using testing::HasSubstr;

namespace {

const char badDescription[] =
    R"(<EtherCATInfo Version="1"><Vendor><Id>#x0C0C</Id></Vendor><Descriptions><Devices>
<Device><Type ProductCode="#x1" RevisionNo="#x2">ODD1</Type><HideType RevisionNo="#x3"/><HideType RevisionNo="#x1"/>
<RxPdo Fixed="true" Sm="2"><Index>#x1600</Index><Exclude>#x1601</Exclude>
 <Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>1</BitLen><Name>Lamp</Name><DataType>BOOL</DataType></Entry>
 <Entry><Index>#x7000</Index><SubIndex>2</SubIndex><BitLen>8</BitLen><Name>Speed</Name><DataType>USINT</DataType></Entry>
</RxPdo><RxPdo Fixed="1" Sm="2"><Index>#x1601</Index><Exclude>#x1600</Exclude>
 <Entry><Index>#x7001</Index><BitLen>8</BitLen><Name>Speed</Name><DataType>INT</DataType></Entry>
 <Entry><Index>#x7002</Index><BitLen>32</BitLen><Name>Long</Name><DataType>INT</DataType></Entry>
</RxPdo><TxPdo><Index>#x1A00</Index></TxPdo>
<Dc><OpMode><Name>DC Sync</Name><AssignActivate>#x300</AssignActivate></OpMode></Dc></Device>
<Device><Type ProductCode="#x1" RevisionNo="#x1">ODD0</Type><HideType RevisionNo="1"/></Device>
<Device><Type ProductCode="#x2" RevisionNo="#x1">ODD2</Type><TxPdo Sm="3"><Index>#x1A00</Index>
 <Entry><Index>#X6000</Index><BitLen>8</BitLen><Name>Lost</Name><DataType>USINT</DataType></Entry></TxPdo>
<Dc><OpMode><Name>DC</Name><AssignActivate>1</AssignActivate><CycleTimeSync0>9000</CycleTimeSync0></OpMode></Dc></Device>
<Device><Type ProductCode="#x3" RevisionNo="#x1">ODD3</Type><HideType RevisionNo="2"/>
<Dc><OpMode><Name>DC</Name><AssignActivate>1</AssignActivate><CycleTimeSync1>7</CycleTimeSync1></OpMode></Dc></Device>
<Device><Type ProductCode="#x4" RevisionNo="#x1">ODD4</Type><Dc><OpMode><Name>DC</Name></OpMode></Dc></Device>
</Devices></Descriptions></EtherCATInfo>)";

TEST(Describe, SaysInPlainWordsWhatCannotBeUsed) {
  const auto path = scratch("odd.xml", badDescription);
  const auto outcome = ighBus("describe " + path);
  std::remove(path.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const char* text :
       {"\"DC Sync\": assign-activate 0x0300", "3 detail  Device RxPDO has no sm channel.",
        "0 error   PDO Entry Name(Speed) conflict", "0x7000:01  \"Lamp\": BOOL",
        "0x7000:02  \"Speed\": starts at bit 1 of byte 0", "0x7000:02  \"Speed\": hidden by 0x7001:00",
        "0x7001:00  \"Speed\": INT moves 16 bits, the entry has 8", "narrower than its bit length",
        "no clock mode named \"DC\"", "not used: only \"DC\" is", "not used: assign-activate is 0",
        "given SYNC0 cycle of the period shift of half the period, SYNC1 cycle 7 ns",
        "given SYNC0 cycle 9000 ns shift 4500 ns",
        "no description from it: 1\n    - \"ODD0\" 0x00000001 revision 0x00000001, "
        "hidden by \"ODD1\" revision 0x00000002, \"ODD0\" revision 0x00000001\n",
        "\"ODD2\" 0x00000002 revision 0x00000001\n    - index 0, or",
        "taken for gaps, no value moves\n        SM 3  PDO 0x1A00  \"Lost\"\n  \"ODD3\"",
        "no sync manager: these PDOs are left out\n        TxPdo 0x1A00", "SM 2  0x1600 excludes 0x1601"})
    EXPECT_THAT(outcome.out, HasSubstr(text));
}

TEST(Describe, GoesOnBehindAFileThatDoesNotLoadAndFindsNothingToComplainAboutInGoodOnes) {
  const auto broken = scratch("broken.xml", "<EtherCATInfo>\n<Vendor></EtherCATInfo>");
  const auto outcome = ighBus("describe /nowhere.xml " + broken + " @modular_head.xml @servo_drive.xml");
  std::remove(broken.c_str());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err,
              testing::MatchesRegex("igh_bus: /nowhere.xml: No such file or directory\nigh_bus: " + broken +
                                    ": line 2[^\n]*\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\"EM500\" 0x00000500 revision 0x00020001: everything can be used"));
  EXPECT_THAT(outcome.out, HasSubstr("slots: 3, increments: index 0x10, PDO 0x1"));
  EXPECT_THAT(outcome.out, HasSubstr("0x7010:01      8  USINT     out   2  0x1601  \"2nd Outputs\""));
}

} // namespace
