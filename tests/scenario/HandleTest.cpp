#include "Fixture.h"

using namespace scenario;

TEST_F(Scenario, EntryIsSharedByItsUsersAndItsIdIsNotReused) {
  start({{0x60, {{"Bit", "BOOL"}, {"gap", "BITARR8", 7}, {"Low", "usint", 8}}, {{"In", "USINT"}}}});
  double read = 0;
  EXPECT_EQ(handle(0, "In", true), 0U);
  EXPECT_EQ(handle(0, "In", true), 0U);
  EXPECT_EQ(value(0), 0.0); // before the first cycle
  EXPECT_FALSE(igh_master_pdo_send(0, 0, 1));
  EXPECT_EQ(handle(0, "In", false), 0U);
  igh_master_destroy_pdo_info(0, 0, true);
  EXPECT_TRUE(igh_master_pdo_recv(0, 0, &read));
  igh_master_destroy_pdo_info(0, 0, true);
  EXPECT_FALSE(igh_master_pdo_recv(0, 0, &read));
  igh_master_destroy_pdo_info(0, 0, true); // one too many
  EXPECT_TRUE(igh_master_pdo_send(0, 0, 1));
  igh_master_destroy_pdo_info(0, 0, false);
  EXPECT_FALSE(igh_master_pdo_send(0, 0, 1));
  EXPECT_EQ(handle(0, "In", true), 1U);
  EXPECT_FALSE(igh_master_pdo_recv(0, 0, &read));

  std::uint32_t id = 5;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "in", true, &id)); // names are case-sensitive
  EXPECT_EQ(id, 0xFFFFFFFFU);
  id = 5;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 1, "In", true, &id));
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, nullptr, true, &id));
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "In", true, nullptr));
  EXPECT_EQ(id, 5U);
  EXPECT_FALSE(igh_master_pdo_recv(0, 1, nullptr));
  EXPECT_FALSE(igh_master_pdo_recv(0, 16, &read)); // beyond the table
  igh_master_destroy_pdo_info(0, 0xFFFFFFFF, true);

  EXPECT_EQ(handle(0, "Bit", true), 2U); // a type without conversion reads nothing and moves nothing
  EXPECT_EQ(value(2), -1e9);
  send(0, "Bit", 1.0);
  send(0, "Low", 1.0); // names of types are case-sensitive too
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0), (Bytes{0, 0}));
}

TEST_F(Scenario, TableOfHandlesGrowsAndEveryHandleMovesItsOwnEntryOfItsType) {
  const std::vector<std::pair<std::string, double>> types{
      {"SINT", -128},          {"USINT", 200},        {"INT", -32768}, {"UINT", 65000},
      {"DINT", -2147483648.0}, {"UDINT", 4294967000}, {"REAL", -0.5},  {"LREAL", 0.1}};
  Device device{0x61};
  for (unsigned int i = 0; i < 40; ++i) {
    device.outputs.push_back({"Out " + std::to_string(i), types[i % 8].first});
    device.inputs.push_back({"In " + std::to_string(i), types[i % 8].first});
  }
  start({switcher, device});
  std::uint32_t id = 0;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "Out 0", false, &id)); // a switcher has no entries
  const auto place = [](unsigned int i) { return i * 7 % 40; };        // not in the order of the image
  for (unsigned int i = 0; i < 40; ++i) {
    EXPECT_FALSE(igh_master_create_pdo_info(0, 1, "none", false, &id)); // also where the table grows
    EXPECT_EQ(handle(1, "Out " + std::to_string(place(i)), false), i);
    EXPECT_TRUE(igh_master_pdo_send(0, i, types[place(i) % 8].second + place(i)));
    cycle(1);
  }
  for (unsigned int i = 0; i < 40; ++i) {
    EXPECT_EQ(handle(1, "In " + std::to_string(place(i)), true), 40 + i);
  }
  cycleUntil(8);
  for (unsigned int i = 0; i < 40; ++i) {
    EXPECT_EQ(value(40 + i), types[place(i) % 8].second + place(i));
  }
}

TEST_F(Scenario, HandlesComeAndGoWhileActiveAndOtherBytesKeepTheirValue) {
  startInOp({{0x63,
              {{"A", "USINT"}, {"B", "USINT"}, {"C", "USINT"}},
              {{"X", "USINT"}, {"Y", "USINT"}, {"Z", "USINT"}}},
             {0x64, {{"Wide", "UINT", 8}, {"Narrow", "USINT"}}}});
  const auto image = [&](unsigned int slave) {
    cycle(1);
    return bus().outputs(slave);
  };
  EXPECT_EQ(handle(0, "B", true), 0U);
  cycle(1);
  send(0, "B", 7); // a direction more for the same handle
  EXPECT_EQ(image(0), (Bytes{0, 7, 0}));
  igh_master_destroy_pdo_info(0, 0, false);
  igh_master_destroy_pdo_info(0, 0, true);
  send(0, "C", 3);
  send(0, "A", 1);
  EXPECT_EQ(image(0), (Bytes{1, 7, 3})); // nobody writes B now, so it stays
  handle(0, "B", false);
  EXPECT_EQ(image(0), (Bytes{1, 0, 3}));

  bus().setInputs(0, {4, 5, 6});
  const std::uint32_t z = handle(0, "Z", true);
  const std::uint32_t x = handle(0, "X", true);
  cycle(2);
  EXPECT_EQ(value(x) * 10 + value(z), 46);
  igh_master_destroy_pdo_info(0, z, true);
  const std::uint32_t y = handle(0, "Y", true);
  cycle(1);
  EXPECT_EQ(value(x) * 10 + value(y), 45);

  // An entry whose type is wider than itself reaches over its neighbour; the handle created later wins.
  send(1, "Narrow", 9);
  const std::uint32_t wide = handle(1, "Wide", false);
  EXPECT_TRUE(igh_master_pdo_send(0, wide, 0x0201));
  EXPECT_EQ(image(1), (Bytes{1, 2}));
  igh_master_destroy_pdo_info(0, wide, false);
  EXPECT_EQ(image(1), (Bytes{1, 9})); // and what it hid comes back when it goes
}

// The platform gives the PDO to the first sync manager with the entries of the last: B lies behind the image.
TEST_F(Scenario, APdoOfTwoSyncManagersLeavesWhatLiesBehindTheImageAlone) {
  startInOp(
      {{0x10,
        {{"A", "USINT"}, {"B", "USINT"}},
        {},
        "<RxPdo Sm='4' Fixed='1'><Index>#x1600</Index><Entry><Index>#x7000</Index><SubIndex>1</SubIndex>"
        "<BitLen>16</BitLen><Name>C</Name><DataType>UINT</DataType></Entry><Entry><Index>#x7000</Index>"
        "<SubIndex>2</SubIndex><BitLen>0</BitLen><Name>D</Name><DataType>UINT</DataType></Entry></RxPdo>"}});
  for (const char* name : {"A", "B", "D", "C"}) {
    send(0, name, 0x0201);
  }
  cycle(2);
  EXPECT_EQ(bus().outputs(0), (Bytes{1, 2}));
}
