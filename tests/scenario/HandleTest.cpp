#include "Fixture.h"

using namespace scenario;

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
  EXPECT_FALSE(igh_master_create_pdo_info(0, 2, "Out 0", false, &id)); // nor has a slave that is not there
  EXPECT_FALSE(igh_master_create_pdo_info(0, 1, nullptr, false, &id));
  EXPECT_FALSE(igh_master_create_pdo_info(0, 1, "Out 0", false, nullptr));
  const auto place = [](unsigned int i) { return i * 7 % 40; }; // not in the order of the image
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
  igh_master_destroy_pdo_info(0, 0, false);
  EXPECT_FALSE(igh_master_pdo_send(0, 0, 1));
}
