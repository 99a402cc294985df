#include "Fixture.h"

#include <cfloat>

using namespace scenario;

namespace {

bool canRead(std::uint32_t handle) {
  double value = 0;
  return igh_master_pdo_recv(0, handle, &value);
}

bool canWrite(std::uint32_t handle) {
  return igh_master_pdo_send(0, handle, 1.0);
}

} // namespace

TEST_F(Scenario, EntryIsSharedByItsUsersAndItsIdIsNotReused) {
  start({{0x60,
          {{"Out", "USINT"}, {"Bit", "BOOL"}, {"gap", "BITARR8", 7}, {"Low", "usint", 8}},
          {{"In", "USINT"}}}});
  EXPECT_EQ(handle(0, "In", true), 0U);
  EXPECT_EQ(handle(0, "In", true), 0U);
  EXPECT_EQ(value(0), 0.0); // before the first cycle
  EXPECT_FALSE(canWrite(0));
  EXPECT_EQ(handle(0, "In", false), 0U);
  EXPECT_TRUE(canWrite(0));
  igh_master_destroy_pdo_info(0, 0, true);
  EXPECT_TRUE(canRead(0));
  igh_master_destroy_pdo_info(0, 0, true);
  EXPECT_FALSE(canRead(0));
  EXPECT_TRUE(canWrite(0));
  igh_master_destroy_pdo_info(0, 0, true); // one too many
  igh_master_destroy_pdo_info(0, 0, false);
  EXPECT_FALSE(canWrite(0));
  EXPECT_EQ(handle(0, "In", true), 1U);

  std::uint32_t id = 5;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "in", true, &id)); // names are case-sensitive
  EXPECT_EQ(id, 0xFFFFFFFFU);
  EXPECT_EQ(handle(0, "Out", false), 2U);
  EXPECT_FALSE(canRead(2));
  id = 5;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 1, "In", true, &id));
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, nullptr, true, &id));
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "In", true, nullptr));
  EXPECT_EQ(id, 5U);
  EXPECT_FALSE(igh_master_pdo_recv(0, 1, nullptr));
  EXPECT_FALSE(canRead(16)); // beyond the table
  igh_master_destroy_pdo_info(0, 0xFFFFFFFF, true);

  EXPECT_EQ(handle(0, "Bit", true), 3U); // a type without conversion reads nothing and moves nothing
  EXPECT_EQ(value(3), -1e9);
  send(0, "Bit", 1.0);
  send(0, "Low", 1.0); // names of types are case-sensitive too
  cycleUntil(8);
  EXPECT_EQ(bus().outputs(0), (Bytes{0, 0, 0}));
}

TEST_F(Scenario, TableOfHandlesGrowsAndEveryHandleMovesItsOwnEntry) {
  std::vector<Field> outputs;
  Bytes expected;
  for (int i = 0; i < 40; ++i) {
    outputs.push_back({"Out " + std::to_string(i), "USINT"});
    expected.push_back(static_cast<std::uint8_t>(200 - i));
  }
  start({switcher, {0x61, outputs}});
  std::uint32_t id = 0;
  EXPECT_FALSE(igh_master_create_pdo_info(0, 0, "Out 0", false, &id)); // a switcher has no entries
  for (std::uint32_t i = 0; i < 40; ++i) {
    const std::uint32_t place = i * 7 % 40;                             // not in the order of the image
    EXPECT_FALSE(igh_master_create_pdo_info(0, 1, "none", false, &id)); // also where the table grows
    EXPECT_EQ(handle(1, "Out " + std::to_string(place), false), i);
    EXPECT_TRUE(igh_master_pdo_send(0, i, 200.0 - place));
    cycle(1);
  }
  EXPECT_EQ(bus().outputs(1), expected);
}

TEST_F(Scenario, AllTypesRoundTripAtTheirExtremes) {
  const std::vector<std::pair<std::string, std::array<double, 3>>> types{
      {"SINT", {-128, 127, -1}},
      {"LREAL", {-DBL_MAX, DBL_MIN, 0.1}},
      {"USINT", {0, 255, 128}},
      {"INT", {-32768, 32767, -1}},
      {"UINT", {0, 65535, 32768}},
      {"DINT", {-2147483648.0, 2147483647, -1}},
      {"UDINT", {0, 4294967295.0, 65536}},
      {"REAL", {-static_cast<double>(FLT_MAX), static_cast<double>(FLT_MIN), 0.5}}};
  Device device{0x62};
  for (const auto& type : types) {
    device.outputs.push_back({"Out " + type.first, type.first});
    device.inputs.push_back({"In " + type.first, type.first});
  }
  start({device});
  for (std::size_t round = 0; round < 3; ++round) {
    for (const auto& type : types) {
      send(0, "Out " + type.first, type.second.at(round));
      handle(0, "In " + type.first, true);
    }
    cycleUntil(8);
    for (const auto& type : types) {
      EXPECT_EQ(value(handle(0, "In " + type.first, true)), type.second.at(round)) << type.first;
    }
  }
}

TEST_F(Scenario, HandlesComeAndGoWhileActiveAndOtherBytesKeepTheirValue) {
  start({{0x63,
          {{"A", "USINT"}, {"B", "USINT"}, {"C", "USINT"}},
          {{"X", "USINT"}, {"Y", "USINT"}, {"Z", "USINT"}}}});
  cycleUntil(8);
  const auto image = [&] {
    cycle(1);
    return bus().outputs(0);
  };
  EXPECT_EQ(handle(0, "B", true), 0U);
  cycle(1);
  send(0, "B", 7); // a direction more for the same handle
  EXPECT_EQ(image(), (Bytes{0, 7, 0}));
  igh_master_destroy_pdo_info(0, 0, false);
  igh_master_destroy_pdo_info(0, 0, true);
  send(0, "C", 3);
  send(0, "A", 1);
  EXPECT_EQ(image(), (Bytes{1, 7, 3})); // nobody writes B now, so it stays
  handle(0, "B", false);
  EXPECT_EQ(image(), (Bytes{1, 0, 3}));

  bus().setInputs(0, {4, 5, 6});
  const std::uint32_t z = handle(0, "Z", true);
  const std::uint32_t x = handle(0, "X", true);
  cycle(2);
  EXPECT_EQ(value(x) * 10 + value(z), 46);
  igh_master_destroy_pdo_info(0, z, true);
  const std::uint32_t y = handle(0, "Y", true);
  cycle(1);
  EXPECT_EQ(value(x) * 10 + value(y), 45);
}

TEST_F(Scenario, WideEntriesReachOverTheirNeighbourButNotOverTheImage) {
  for (const bool wideLast : {false, true}) {
    start({{0x64, {{"Wide", "UINT", 8}, {"Narrow", "USINT"}, {"End", "LREAL", 8}}}});
    handle(0, wideLast ? "Narrow" : "Wide", false);
    send(0, "Wide", 0x0201);
    send(0, "Narrow", 9);
    send(0, "End", -2.0); // its low byte is 0
    handle(0, "End", true);
    cycleUntil(8);
    EXPECT_EQ(bus().outputs(0),
              (wideLast ? Bytes{1, 2, 0} : Bytes{1, 9, 0})); // the handle created later wins
    for (int user = 0; user < 2; ++user) {
      igh_master_destroy_pdo_info(0, wideLast ? 1 : 0, false);
    }
    cycle(2);
    EXPECT_EQ(bus().outputs(0), (Bytes{1, 9, 0})); // and what it hid comes back when it goes
    startOver();
  }
}
