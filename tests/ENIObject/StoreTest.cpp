#include "ENIObject/DescriptionSupport.h"

#include <gtest/gtest.h>

using namespace description_test;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

class Store : public testing::Test {
protected:
  CMasterENIObject store{capture};
};

const std::string entry =
    "<Entry><Index>#x6000</Index><SubIndex>1</SubIndex><BitLen>16</BitLen><Name>V</Name>"
    "<Name>W</Name><DataType>INT</DataType></Entry>";
const std::string deviceIds = " (VendorId = 0x2, ProductCode = 0x1, RevisionNo = 0x1, class = T)";
const Message direction{0, "Sync output flag not don't matched"};

} // namespace

TEST_F(Store, NumbersAndOrdinalsAreReadAndWrittenAsTheFilesHaveThem) {
  const std::pair<const char*, unsigned int> numbers[] = {{"#x1A", 26},
                                                          {"0x1A", 26},
                                                          {"x1A", 26},
                                                          {"#26", 26},
                                                          {"#X1A", 0},
                                                          {"word", 0},
                                                          {nullptr, 0},
                                                          {"010", 8},
                                                          {"-1", ~0U},
                                                          {"#x1FFFFFFFF", ~0U},
                                                          {"99999999999999999999", ~0U}};
  for (const auto& [text, value] : numbers) {
    EXPECT_EQ(CMasterENIObject::resolveENIValue(text), value) << value;
  }
  std::string ordinals;
  for (unsigned int n : {0U, 1U, 2U, 3U, 4U, 22U}) {
    ordinals += CMasterENIObject::formatSeqInEnglish(n);
  }
  EXPECT_EQ(ordinals, "1st 2nd 3rd 4th 22th ");
}

TEST_F(Store, AFileThatIsNoDescriptionIsReportedAndChangesNothing) {
  ASSERT_TRUE(load(store, description(device("1", "1", ""))));
  CSlaveENIObject* known = store.findSlaveENIObject(2, 1, 1);
  EXPECT_TRUE(known != nullptr && store.findSlaveENIObject(2, 1, 2) == nullptr);
  for (const char* text : {"", "<EthercatInfo/>"}) {
    EXPECT_FALSE(load(store, text));
    EXPECT_EQ(messages(), (Messages{{0, "Can't find EthercatInfo Node in xml-file!"}}));
  }
  for (const char* id : {"", "<Id>0</Id>", "<Id>#X2</Id>"}) {
    EXPECT_FALSE(load(store, std::string("<EtherCATInfo><Vendor>") + id + "</Vendor></EtherCATInfo>"));
    EXPECT_EQ(messages(), (Messages{{1, "File version is "}, {0, "Can't find vendor information!"}}));
  }
  CaptureStdout();
  EXPECT_FALSE(store.insertENIFile(nullptr, false) || store.insertENIFile("/nowhere", true));
  EXPECT_EQ(GetCapturedStdout().rfind("Open file error,the file maybe not exist:\nOpen file error", 0), 0U);
  EXPECT_EQ(messages().back(), (Message{0, "Can't open ENI-file!"}));
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 1), known);

  EXPECT_TRUE(load(store, "<EtherCATInfo><Vendor><Id>3</Id></Vendor></EtherCATInfo>"));
  EXPECT_EQ(messages().back(), (Message{1, "Vendor id = 0x3, Vendor name = Unknown vendor name"}));
}

TEST_F(Store, TheFirstDescriptionWinsAndHiddenRevisionsAreLeftOut) {
  const std::string hiding = "<HideType/><HideType RevisionNo=\"2\"/><HideType RevisionNo=\"17\"/>";
  ASSERT_TRUE(load(store, description(device("#x1", "#x1", hiding) + device("1", "#x11", "") +
                                      "<Device><Type ProductCode=\"5\">U</Type></Device>")));
  const Message error{0, "Device resolve error (ProductCode = 5, RevisionNo = , class = U)"};
  EXPECT_EQ(messages(), (Messages{{1, "File version is 1.6"},
                                  {1, "Vendor id = 0x2, Vendor name = Maker"},
                                  {3, "ProductCode = 0x1, RevisionNo = 0x1, class = T"},
                                  {3, "ProductCode = 0x1, RevisionNo = 0x11, class = T"},
                                  error,
                                  {0, "Can't find device information!"},
                                  {1, "ResolveDeviceDetail invoke for" + deviceIds + "\n"},
                                  error}));
  CSlaveENIObject* first = store.findSlaveENIObject(2, 1, 1);
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 0x11), nullptr);

  ASSERT_TRUE(load(store, description(device("1", "1", "") + device("1", "17", ""))));
  EXPECT_EQ(complaints(), (Messages{{0, "Device ignore" + deviceIds}}));
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 1), first);
  EXPECT_NE(store.findSlaveENIObject(2, 1, 0x11), nullptr) << "hidden in another file only";
}

TEST_F(Store, PdosAreReadWithTheirIrregularities) {
  const std::string pdos = "<RxPdo Sm='2' Fixed='true'><Index>#x1600</Index>" + entry +
                           R"(<Entry><Index>0</Index><BitLen>8</BitLen></Entry></RxPdo><RxPdo Fixed='true'/>
      <RxPdo Sm='2' Fixed='1'/><RxPdo Sm='7' Fixed='true'/><TxPdo Sm='3' Fixed='1'><Index>#x1A00</Index>)" +
                           entry + "</TxPdo><TxPdo>" + entry + "</TxPdo><TxPdo Sm='2' Fixed='true'>" + entry +
                           "</TxPdo>";
  ASSERT_TRUE(load(store, description(device("1", "1", pdos))));
  CSlaveENIObject* slave = store.findSlaveENIObject(2, 1, 1);
  EXPECT_EQ(entriesOf(slave), "2/1600 6000:1 16 INT V\n2/1600 0:0 8  \n3/1A00 6000:1 16 INT V\n");
  EXPECT_EQ(slave->getSlaveSyncInfo()[2].index, 7) << "of a PDO without entries";
  EXPECT_EQ(Messages(messages().begin() + 4, messages().end()),
            (Messages{{3, "Device RxPDO has no sm channel." + deviceIds},
                      {2, "Device RxPDO has unexpected fixed value." + deviceIds},
                      {2, "Device TxPDO has wrong fixed value." + deviceIds},
                      {3, "Device RxPDO has no sm channel." + deviceIds},
                      direction,
                      {0, "PDO Entry Name(V) conflict，system will overwrite it!\n"}}));
}

TEST_F(Store, SlotsPlaceModulesAndAMissingModuleShiftsTheRest) {
  const char* const pdos = R"(<RxPdo Sm='2'><Index DependOnSlot='true'>#x1600</Index>
      <Entry><Index DependOnSlot='true'>#x7000</Index><Name>Out</Name></Entry></RxPdo>
      <TxPdo Sm='3' Fixed='true'><Index DependOnSlot='1'>#x1A00</Index>
      <Entry><Index DependOnSlot='1'>#x6000</Index><Name>In</Name></Entry></TxPdo><TxPdo Sm=''/><TxPdo Sm='4'/>)";
  ASSERT_TRUE(load(store, description("", module("#x50", pdos) + module("80", "<RxPdo/>") +
                                              "<Module><Type ModuleIdent=\"9\"/><Name/></Module>")));
  EXPECT_EQ(complaints(), (Messages{{2, "Module RxPDO has unexpected fixed value."},
                                    {2, "Module TxPDO has unexpected fixed value."},
                                    {2, "Module type id and name id can not be empty."}}));
  EXPECT_EQ(messages()[3], (Message{3, "Device RxPDO has no sm channel."}));
  const std::string slot = "<Slot><ModuleIdent>#x50</ModuleIdent><ModuleIdent>9</ModuleIdent></Slot>";
  ASSERT_TRUE(load(store, description(device("1", "1",
                                             "<Slots SlotIndexIncrement=\"#x10\" SlotPdoIncrement=\"#x20\">" +
                                                 slot + "<Slot/>" + slot + "</Slots>"))));
  EXPECT_EQ(entriesOf(store.findSlaveENIObject(2, 1, 1)),
            "2/1600 7000:0 0  1st Out\n2/1620 7010:0 0  3rd Out\n"
            "3/1A00 6000:0 0  1st In\n3/1A00 6000:0 0  3rd In\n");
}

TEST_F(Store, EveryElementOfANameCountsNotOnlyTheFirst) {
  const std::string content = R"(<Slots SlotPdoIncrement="1"><Slot><ModuleIdent>1</ModuleIdent></Slot></Slots>
      <Slots SlotPdoIncrement="2"><Slot><ModuleIdent>2</ModuleIdent></Slot>
        <Slot><ModuleIdent>1</ModuleIdent></Slot></Slots>
      <Dc><OpMode><Name>A</Name></OpMode></Dc><Dc><OpMode><Name>DC</Name><AssignActivate>#x10300</AssignActivate>
        <CycleTimeSync0>2</CycleTimeSync0><ShiftTimeSync0>-3</ShiftTimeSync0><CycleTimeSync1>4</CycleTimeSync1>
        <ShiftTimeSync1>-5</ShiftTimeSync1></OpMode><OpMode><Name>DC</Name></OpMode></Dc>)";
  const std::string pdo = "<Index DependOnSlot='true'>#x1600</Index>" + entry;
  const std::string modules =
      module("1", "<TxPdo Sm='2'>" + pdo + "</TxPdo><RxPdo Sm='4'>" + pdo + "</RxPdo>") +
      "</Modules><Modules>" + module("2", "<TxPdo Sm='4'>" + pdo + "</TxPdo>");
  const std::string devices = device("1", "", content) + "</Devices><Devices>" + device("2", "1", "") +
                              "</Devices></Descriptions><Descriptions><Devices>" + device("3", "1", "");
  ASSERT_TRUE(load(store, description(devices, modules)));
  EXPECT_TRUE(store.findSlaveENIObject(2, 2, 1) != nullptr && store.findSlaveENIObject(2, 3, 1) != nullptr);
  CSlaveENIObject* slave = store.findSlaveENIObject(2, 1, 0);
  ASSERT_NE(slave, nullptr) << "an empty RevisionNo is 0";
  EXPECT_EQ(entriesOf(slave), "2/1600 6000:1 16 INT 1st V\n2/1602 6000:1 16 INT 2nd V\n"
                              "4/1600 6000:1 16 INT 1st V\n4/1602 6000:1 16 INT 2nd V\n");
  EXPECT_EQ(std::count(messages().begin(), messages().end(), direction), 1) << "of a module";
  EXPECT_TRUE(slave->getSlotNumber() == 2 && slave->getSlotPdoIncrement() == 2);
  unsigned short assign = 0;
  unsigned int cycle[2] = {};
  int shift[2] = {};
  EXPECT_FALSE(slave->getDCConfiguration("dc", assign, cycle[0], shift[0], cycle[1], shift[1]));
  EXPECT_TRUE(slave->getDCConfiguration("DC", assign, cycle[0], shift[0], cycle[1], shift[1]));
  EXPECT_TRUE(assign == 0x300 && cycle[0] == 2 && shift[0] == -3 && cycle[1] == 4 && shift[1] == -5);
}

TEST_F(Store, WithoutASinkMessagesAreCutAndPrinted) {
  CMasterENIObject unheard([](unsigned int level, const char*) { return level != 1; });
  CaptureStdout();
  load(unheard, "<EtherCATInfo Version=\"" + std::string(400, '1') + "\"/>");
  EXPECT_EQ(GetCapturedStdout(), "File version is " + std::string(239, '1') + "\n");
}
