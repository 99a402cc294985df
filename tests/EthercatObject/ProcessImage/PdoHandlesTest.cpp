// Handles over bytes of the test: no bus.
#include "EthercatObject/ProcessImage/PdoHandles.h"

#include "ENIObject/DescriptionSupport.h"
#include "EthercatObject/ProcessImage/RegistrationList.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

class PdoHandles : public testing::Test {
protected:
  // Entries of one byte each; Wide has a type of two, that of Odd is unknown.
  static CSlaveENIObject* describe(CMasterENIObject& store) {
    using namespace description_test;
    std::string pdo = "<RxPdo Sm='2'><Index>1</Index>";
    for (const auto& [name, type] :
         {std::pair{"A", "USINT"}, {"B", "USINT"}, {"Odd", "usint"}, {"Wide", "UINT"}, {"E", "USINT"}}) {
      pdo += std::string("<Entry><Index>9</Index><BitLen>8</BitLen><Name>") + name + "</Name><DataType>" +
             type + "</DataType></Entry>";
    }
    EXPECT_TRUE(load(store, description(device("1", "1", pdo + "</RxPdo>"))));
    return store.findSlaveENIObject(2, 1, 1);
  }
  PdoHandles() {
    for (unsigned int entry = 0; entry < bytes.size(); ++entry) { // as the platform would
      slave.getPdoEntryOffset(entry)->offset = entry;
    }
  }
  unsigned int make(const char* name, bool read) {
    unsigned int id = 0xEEEE;
    EXPECT_TRUE(handles.create(slave, name, read, &id)) << name;
    return id;
  }
  unsigned int send(const char* name, double value) {
    const unsigned int id = make(name, false);
    EXPECT_TRUE(handles.write(id, value));
    return id;
  }
  double value(unsigned int id) const {
    double value = -1e9;
    EXPECT_TRUE(handles.read(id, &value));
    return value;
  }
  const std::vector<unsigned char>& sent() {
    handles.copyOutputs(image);
    return bytes;
  }

  CMasterENIObject store{description_test::capture};
  CEthercatSlave slave{nullptr, 3, 0, 0, describe(store), nullptr};
  CPdoHandles handles;
  std::vector<unsigned char> bytes = std::vector<unsigned char>(5);
  _IMAGE image{bytes.data(), 5};
};

TEST_F(PdoHandles, AreSharedByTheirUsersAndNotUsedAgain) {
  double read = 0;
  EXPECT_TRUE(make("A", true) == 0 && make("A", true) == 0);
  EXPECT_FALSE(handles.write(0, 1) || handles.read(0, nullptr));
  EXPECT_EQ(make("A", false), 0U);
  handles.destroy(0, true);
  EXPECT_EQ(value(0), 0.0);
  handles.destroy(0, true);
  EXPECT_FALSE(handles.read(0, &read));
  handles.destroy(0, true); // one too many
  EXPECT_TRUE(handles.write(0, 1));
  handles.destroy(0, false);
  EXPECT_FALSE(handles.write(0, 1));
  EXPECT_EQ(make("A", true), 1U);
  unsigned int id = 5;
  EXPECT_FALSE(handles.create(slave, "a", true, &id)); // names are case-sensitive
  EXPECT_EQ(id, 0xFFFFFFFFU);
  EXPECT_FALSE(handles.read(16, &read) || handles.write(16, 1)); // beyond the table
  handles.destroy(0xFFFFFFFF, true);
  EXPECT_EQ(value(make("Odd", true)), -1e9); // a type without conversion reads nothing and moves nothing
  send("Odd", 7);
  EXPECT_THAT(sent(), ElementsAre(0, 0, 0, 0, 0));
  handles.clear();
  EXPECT_EQ(make("A", true), 0U) << "the keys are forgotten as well";
}

TEST_F(PdoHandles, ComeAndGoWhileBytesOfOthersKeepTheirValue) {
  make("B", true);
  EXPECT_THAT(sent(), ElementsAre(0, 0, 0, 0, 0));
  send("B", 7); // a direction more for the same handle
  EXPECT_THAT(sent(), ElementsAre(0, 7, 0, 0, 0));
  send("A", 1);
  EXPECT_THAT(sent(), ElementsAre(1, 7, 0, 0, 0));
  handles.destroy(0, false);
  bytes[1] = 5;
  EXPECT_THAT(sent(), ElementsAre(1, 5, 0, 0, 0)) << "nobody writes B now, so it stays";
  handles.destroy(0, true);
  make("B", false);
  EXPECT_THAT(sent(), ElementsAre(1, 0, 0, 0, 0));
  bytes = {4, 5, 6, 7, 8};
  const unsigned int e = make("E", true);
  const unsigned int a = make("A", true);
  handles.copyInputs(image);
  EXPECT_EQ(value(a) * 10 + value(e), 48);
  // An entry whose type is wider than itself reaches over its neighbour, but not beyond the image.
  send("Wide", 0x0201);
  EXPECT_THAT(sent(), ElementsAre(1, 0, 6, 1, 2));
  image.size = 4;
  bytes[4] = 9;
  handles.arrange(image);
  EXPECT_THAT(sent(), ElementsAre(1, 0, 6, 1, 9));
  handles.copyOutputs({}); // without one nothing moves
  handles.copyInputs({});
}

TEST_F(PdoHandles, OfALayoutThatWasNotTakenOnlyTheStartOfAnEntryIsInTheImage) {
  SLAVE_LIST slaves;
  slaves.push_back(std::make_unique<CEthercatSlave>(nullptr, 0, 0, 0, slave.getENIObject(), nullptr));
  CRegistrationList rows;
  EXPECT_FALSE(rows.isBuilt());
  rows.build(slaves);
  *slaves[0]->getPdoEntryOffset(4) = {7, 4}; // with its eight bits it would reach into the next byte
  EXPECT_EQ(rows.measureImage(slaves), 8U);
}

} // namespace
