#include "DescriptionSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace description_test;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

using Rows = std::vector<std::string>;

std::string const entry =
    "<Entry><Index>#x6000</Index><SubIndex>1</SubIndex><BitLen>16</BitLen><Name>V</Name>"
    "<Name>W</Name><DataType>INT</DataType></Entry>";

} // namespace

TEST(Store, NumbersAndOrdinalsAreReadAndWrittenAsTheFilesHaveThem) {
  auto const value = [](char const* text) { return CMasterENIObject::resolveENIValue(text); };
  for (char const* text : {"#x1A", "0x1A", "x1A", "#26"}) {
    EXPECT_EQ(value(text), 26U) << text;
  }
  for (char const* text : {"#X1A", "word", static_cast<char const*>(nullptr)}) {
    EXPECT_EQ(value(text), 0U);
  }
  EXPECT_EQ(value("010"), 8U);
  EXPECT_EQ(value("-1"), 0xFFFFFFFFU);
  std::string ordinals;
  for (unsigned int n : {0U, 1U, 2U, 3U, 4U, 22U}) {
    ordinals += CMasterENIObject::formatSeqInEnglish(n);
  }
  EXPECT_EQ(ordinals, "1st 2nd 3rd 4th 22th ");
}

TEST(Store, AFileThatIsNoDescriptionIsReportedAndChangesNothing) {
  CMasterENIObject store(capture);
  ASSERT_TRUE(load(store, description(device("1", "1", ""))));
  CSlaveENIObject* known = store.findSlaveENIObject(2, 1, 1);
  ASSERT_NE(known, nullptr);
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 2), nullptr);
  Message const noRoot{0, "Can't find EthercatInfo Node in xml-file!"};
  Message const noVendor{0, "Can't find vendor information!"};
  for (char const* text : {"", "<EthercatInfo/>"}) {
    EXPECT_FALSE(load(store, text));
    EXPECT_EQ(messages(), Messages{noRoot});
  }
  for (char const* id : {"", "<Id>0</Id>", "<Id>#X2</Id>"}) {
    std::string const vendor = "<Vendor>" + std::string(id) + "</Vendor>";
    EXPECT_FALSE(load(store, "<EtherCATInfo>" + vendor + "</EtherCATInfo>"));
    EXPECT_EQ(messages(), (Messages{{1, "File version is "}, noVendor}));
  }
  CaptureStdout();
  for (char const* path : {static_cast<char const*>(nullptr), "/nowhere", "/tmp"}) {
    EXPECT_EQ(store.insertENIFile(path, false), 0U);
  }
  EXPECT_EQ(store.insertENIFile("/nowhere", true), 0U);
  EXPECT_EQ(GetCapturedStdout().rfind("Open file error,the file maybe not exist:\nOpen file error", 0), 0U);
  EXPECT_EQ(messages().back(), (Message{0, "Can't open ENI-file!"}));
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 1), known);

  EXPECT_TRUE(load(store, "<EtherCATInfo><Vendor><Id>3</Id></Vendor></EtherCATInfo>"));
  EXPECT_EQ(messages().back(), (Message{1, "Vendor id = 0x3, Vendor name = Unknown vendor name"}));
}

TEST(Store, TheFirstDescriptionWinsAndHiddenRevisionsAreLeftOut) {
  CMasterENIObject store(capture);
  std::string const devices =
      device("#x1", "#x10", "<HideType/><HideType RevisionNo=\"1\"/><HideType RevisionNo=\"17\"/>") +
      device("1", "#x11", "") + device("2", "#x11", "") + "<Device><Type ProductCode=\"5\">U</Type></Device>";
  ASSERT_TRUE(load(store, description(devices)));
  Message const error{0, "Device resolve error (ProductCode = 5, RevisionNo = , class = U)"};
  std::string const ids = " (VendorId = 0x2, ProductCode = 0x1, RevisionNo = 0x10, class = T)";
  EXPECT_EQ(messages(), (Messages{{1, "File version is 1.6"},
                                  {1, "Vendor id = 0x2, Vendor name = Maker"},
                                  {3, "ProductCode = 0x1, RevisionNo = 0x10, class = T"},
                                  {3, "ProductCode = 0x1, RevisionNo = 0x11, class = T"},
                                  {3, "ProductCode = 0x2, RevisionNo = 0x11, class = T"},
                                  error,
                                  {0, "Can't find device information!"},
                                  {1, "ResolveDeviceDetail invoke for" + ids + "\n"},
                                  {1, "ResolveDeviceDetail invoke for (VendorId = 0x2, ProductCode = 0x2, "
                                      "RevisionNo = 0x11, class = T)\n"},
                                  error}));
  CSlaveENIObject* first = store.findSlaveENIObject(2, 1, 0x10);
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 0x11), nullptr);
  EXPECT_NE(store.findSlaveENIObject(2, 2, 0x11), nullptr);

  ASSERT_TRUE(load(store, description(device("1", "16", "") + device("1", "17", ""))));
  EXPECT_EQ(complaints(), (Messages{{0, "Device ignore" + ids}}));
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 0x10), first);
  EXPECT_NE(store.findSlaveENIObject(2, 1, 0x11), nullptr) << "hidden in another file only";
}

TEST(Store, PdosAreReadWithTheirIrregularities) {
  CMasterENIObject store(capture);
  std::string const pdos = "<RxPdo Sm='2' Fixed='true'><Index>#x1600</Index>" + entry +
                           R"(<Entry><Index>0</Index><BitLen>8</BitLen></Entry></RxPdo><RxPdo Fixed='true'/>
      <RxPdo Sm='2' Fixed='1'><Index>#x1601</Index></RxPdo>
      <TxPdo Sm='3' Fixed='1'><Index>#x1A00</Index>)" +
                           entry + "</TxPdo><TxPdo>" + entry + "</TxPdo><TxPdo Sm='2' Fixed='true'>" + entry +
                           R"(</TxPdo><Dc><OpMode><Name>DC</Name>
      <AssignActivate>#x10300</AssignActivate><ShiftTimeSync0>-5000</ShiftTimeSync0></OpMode>
      <OpMode><Name>Off</Name></OpMode></Dc>)";
  ASSERT_TRUE(load(store, description(device("1", "1", pdos))));
  CSlaveENIObject* slave = store.findSlaveENIObject(2, 1, 1);
  EXPECT_EQ(entriesOf(slave), (Rows{"2/1600 6000:1 16 INT V", "2/1600 0:0 8  ", "3/1A00 6000:1 16 INT V"}));
  std::string const ids = " (VendorId = 0x2, ProductCode = 0x1, RevisionNo = 0x1, class = T)";
  Messages const last(messages().begin() + 4, messages().end());
  EXPECT_EQ(last, (Messages{{3, "Device RxPDO has no sm channel." + ids},
                            {2, "Device RxPDO has unexpected fixed value." + ids},
                            {2, "Device TxPDO has wrong fixed value." + ids},
                            {3, "Device RxPDO has no sm channel." + ids},
                            {0, "Sync output flag not don't matched"},
                            {0, "PDO Entry Name(V) conflict，system will overwrite it!\n"}}));
  ASSERT_EQ(slave->getDcOpModes().size(), 2U);
  EXPECT_EQ(slave->getDcOpModes().at("DC").shiftTimeSync0, -5000);
  EXPECT_EQ(slave->getDcOpModes().at("DC").assignActivate, 0x300);
}

TEST(Store, SlotsPlaceModulesAndAMissingModuleShiftsTheRest) {
  CMasterENIObject store(capture);
  char const* const pdos = R"(<RxPdo Sm='2'><Index DependOnSlot='true'>#x1600</Index>
      <Entry><Index DependOnSlot='true'>#x7000</Index><Name>Out</Name></Entry></RxPdo>
      <TxPdo Sm='3' Fixed='true'><Index DependOnSlot='1'>#x1A00</Index>
      <Entry><Index DependOnSlot='1'>#x6000</Index><Name>In</Name></Entry></TxPdo><TxPdo Sm=''/><TxPdo Sm='4'/>)";
  ASSERT_TRUE(load(store, description("", module("#x50", pdos) + module("80", "<RxPdo/>") +
                                              "<Module><Type ModuleIdent=\"9\"/><Name/></Module>")));
  EXPECT_EQ(complaints(), (Messages{{2, "Module RxPDO has unexpected fixed value."},
                                    {2, "Module TxPDO has unexpected fixed value."},
                                    {2, "Module type id and name id can not be empty."}}));
  EXPECT_EQ(messages()[3], (Message{3, "Device RxPDO has no sm channel."}));
  std::string const slot = "<Slot><ModuleIdent>#x50</ModuleIdent><ModuleIdent>9</ModuleIdent></Slot>";
  std::string const slots =
      "<Slots SlotIndexIncrement=\"#x10\" SlotPdoIncrement=\"#x20\">" + slot + "<Slot/>" + slot + "</Slots>";
  ASSERT_TRUE(load(store, description(device("1", "1", slots)))) << "another file";
  CSlaveENIObject* slave = store.findSlaveENIObject(2, 1, 1);
  EXPECT_EQ(entriesOf(slave), (Rows{"2/1600 7000:0 0  1st Out", "2/1620 7010:0 0  3rd Out",
                                    "3/1A00 6000:0 0  1st In", "3/1A00 6000:0 0  3rd In"}));
  EXPECT_EQ(slave->getSlotNumber(), 3U);
  EXPECT_EQ(slave->getSlotIndexIncrement() + slave->getSlotPdoIncrement(), 0x30U);
}

TEST(Store, EveryElementOfANameCountsNotOnlyTheFirst) {
  CMasterENIObject store(capture);
  std::string const slots =
      "<Slots SlotPdoIncrement=\"1\"><Slot><ModuleIdent>1</ModuleIdent></Slot></Slots><Slots "
      "SlotPdoIncrement=\"2\">"
      "<Slot><ModuleIdent>2</ModuleIdent></Slot><Slot><ModuleIdent>1</ModuleIdent></Slot></Slots>";
  std::string const dc =
      "<Dc><OpMode><Name>A</Name></OpMode></Dc><Dc><OpMode><Name>DC</Name>"
      "<AssignActivate>1</AssignActivate><CycleTimeSync0>2</CycleTimeSync0><ShiftTimeSync0>-3"
      "</ShiftTimeSync0><CycleTimeSync1>4</CycleTimeSync1><ShiftTimeSync1>-5</ShiftTimeSync1>"
      "</OpMode></Dc>";
  std::string const pdo = "<Index DependOnSlot='true'>#x1600</Index>" + entry;
  std::string const modules =
      module("1", "<TxPdo Sm='2'>" + pdo + "</TxPdo><RxPdo Sm='4'>" + pdo + "</RxPdo>") +
      "</Modules><Modules>" + module("2", "<TxPdo Sm='4'>" + pdo + "</TxPdo>");
  std::string const devices = device("1", "", "<RxPdo Sm='2'/><RxPdo Sm='7' Fixed='true'/>" + slots + dc) +
                              "</Devices><Devices>" + device("2", "1", "") +
                              "</Devices></Descriptions><Descriptions><Devices>" + device("3", "1", "");
  ASSERT_TRUE(load(store, description(devices, modules)));
  EXPECT_TRUE(store.findSlaveENIObject(2, 2, 1) != nullptr && store.findSlaveENIObject(2, 3, 1) != nullptr);
  CSlaveENIObject* slave = store.findSlaveENIObject(2, 1, 0);
  ASSERT_NE(slave, nullptr) << "an empty RevisionNo is 0";
  EXPECT_EQ(entriesOf(slave), (Rows{"2/1600 6000:1 16 INT 1st V", "2/1602 6000:1 16 INT 2nd V",
                                    "4/1600 6000:1 16 INT 1st V", "4/1602 6000:1 16 INT 2nd V"}));
  Message const direction{0, "Sync output flag not don't matched"};
  EXPECT_EQ(std::count(messages().begin(), messages().end(), direction), 2) << "of a module, of the device";
  EXPECT_EQ(slave->getSlaveSyncInfo()[2].index, 7) << "of a PDO without entries";
  EXPECT_TRUE(slave->getSlotNumber() == 2 && slave->getSlotPdoIncrement() == 2);
  unsigned short assign = 0;
  unsigned int cycle[2] = {};
  int shift[2] = {};
  EXPECT_TRUE(slave->getDCConfiguration("DC", assign, cycle[0], shift[0], cycle[1], shift[1]));
  EXPECT_TRUE(assign == 1 && cycle[0] == 2 && shift[0] == -3 && cycle[1] == 4 && shift[1] == -5);
}

TEST(Store, WithoutASinkMessagesAreCutAndPrinted) {
  CMasterENIObject store([](unsigned int level, char const*) { return level != 1; });
  TemporaryFile const file("<EtherCATInfo Version=\"" + std::string(400, '1') + "\"/>");
  CaptureStdout();
  store.insertENIFile(file.path(), false);
  EXPECT_EQ(GetCapturedStdout(), "File version is " + std::string(239, '1') + "\n");
}

TEST(Store, RealDescriptionFilesLoadAndMakeConsistentLayouts) {
  if (std::string(IGH_TEST_ESI_DIR).empty()) {
    GTEST_SKIP() << "no folder of real description files was given";
  }
  std::map<std::uintmax_t, std::size_t> const devicesBySize{
      {70346, 1}, {752378, 1}, {402924, 4}, {15583, 4},
      {87764, 1}, {926054, 1}, {68029, 7},  {324771, 2 /* hide two others */}};
  std::map<std::uintmax_t, std::size_t> const entriesBySize{{70346, 22}, {752378, 13}, {402924, 24}};
  for (auto const& file : std::filesystem::directory_iterator(IGH_TEST_ESI_DIR)) {
    if (file.path().extension() != ".xml") {
      continue;
    }
    SCOPED_TRACE(file.path());
    CMasterENIObject store(capture);
    ASSERT_NE(store.insertENIFile(file.path().c_str(), false), 0U);
    std::size_t devices = 0;
    std::size_t entries = 0;
    for (auto const& [product, revisions] : store.getVendors().begin()->second.mapProduct) {
      for (auto const& [revision, slave] : revisions.mapRevision) {
        ++devices;
        entries += entriesOf(slave).size();
        EXPECT_EQ(entriesOf(slave).size(), slave->getSlavePDOEntryCount());
      }
    }
    auto const size = file.file_size();
    EXPECT_EQ(devices, devicesBySize.count(size) != 0 ? devicesBySize.at(size) : devices);
    EXPECT_EQ(entries, entriesBySize.count(size) != 0 ? entriesBySize.at(size) : entries);
  }
}
