// What a slave makes of the PDOs that the master gives it.
#include "Bench.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>

using namespace bench;

namespace {

using Pdos = std::vector<sim::Pdo>;

const sim::Entry one{0x7000, 1, 8}, two{0x7000, 2, 8}, both{0x7000, 1, 16}, unknown{0x7005, 1, 4};
const sim::Entry object{0x2000, 1, 16}, input{0x6000, 1, 16};
const Pdos ownInputs{{0x1A00, {input}}};

const std::string refused =
    "EtherCAT ERROR 0-0: Failed to set SAFEOP state, slave refused state change with AL status code 0x00";

struct Case {
  const char* what;
  std::function<void(sim::Slave&)> change;
  Pdos outputs; // on sync manager 2
  Pdos inputs;  // on 3
  unsigned int code;
  std::string log = {}; // without what every line begins with
};

void withoutCoe(sim::Slave& slave) {
  slave.coe = false;
}
void withCoeOnly(sim::Slave& /*slave*/) {}
void configurable(sim::Slave& slave) {
  slave.pdoConfig = true;
}
void assignable(sim::Slave& slave) {
  slave.pdoAssign = true;
}

const Case cases[] = {
    {"the same bytes, cut otherwise", withoutCoe, {{0x1600, {both}}}, ownInputs, 0},
    {"a byte less", withoutCoe, {{0x1600, {one}}}, ownInputs, 0x1D},
    {"inputs on no sync manager", withoutCoe, {{0x1600, {both}}}, {}, 0x1E},
    {"a chip that compares nothing",
     [](sim::Slave& slave) { slave.checksLengths = slave.coe = false; },
     {{0x1600, {one}}},
     ownInputs,
     0},
    {"a slave that lists nothing",
     [](sim::Slave& slave) {
       slave.defaultMapping.clear();
       slave.furtherPdos.clear();
     },
     {{0x1600, {one}}},
     ownInputs,
     0},
    {"another mapping of a slave that has no way to change it",
     withCoeOnly,
     {{0x1600, {both}}},
     ownInputs,
     0,
     "WARNING Slave does not support changing the PDO mapping! (0x1600)"},
    {"another assignment, the same",
     withCoeOnly,
     {{0x1601, {{0x7001, 1, 16}}}},
     ownInputs,
     0,
     "WARNING Slave does not support assigning PDOs! (SM2)"},
    {"a shorter mapping, written", configurable, {{0x1600, {two}}}, ownInputs, 0},
    {"an entry from the objects", configurable, {{0x1600, {one, {0, 0, 4}, object}}}, ownInputs, 0},
    {"a fixed PDO stays as it was",
     [](sim::Slave& slave) { slave.pdoConfig = slave.defaultMapping[0].pdos[0].fixed = true; },
     {{0x1600, {one}}},
     ownInputs,
     0x1D,
     "WARNING Failed to clear the mapping of PDO 0x1600."},
    {"an entry that nobody knows empties the PDO",
     configurable,
     {{0x1600, {one, {0, 0, 4}, unknown}}},
     ownInputs,
     0x1D,
     "WARNING Failed to map 0x7005:01 into PDO 0x1600, which is empty now."},
    {"an entry of another width",
     configurable,
     {{0x1600, {both}}},
     ownInputs,
     0x1D,
     "WARNING Failed to map 0x7000:01 into PDO 0x1600, which is empty now."},
    {"another PDO assigned", assignable, {{0x1602, {one}}}, ownInputs, 0},
    {"PDOs that exclude each other, the second names the first",
     assignable,
     {{0x1600, {one, two}}, {0x1601, {{0x7001, 1, 16}}}},
     ownInputs,
     0x1D,
     "WARNING PDO configuration failed. (0x1601 refused in SM2)"},
    {"the same, the first names the second",
     assignable,
     {{0x1601, {{0x7001, 1, 16}}}, {0x1600, {one, two}}},
     ownInputs,
     0x1D,
     "WARNING PDO configuration failed. (0x1600 refused in SM2)"},
    {"sync managers behind a refused PDO are left out",
     assignable,
     {{0x16FF, {}}},
     {{0x1A01, {{0x6001, 1, 8}}}},
     0x1E,
     "WARNING Slave does not support changing the PDO mapping! (0x16FF)|"
     "WARNING PDO configuration failed. (0x16FF refused in SM2)|"},
};

using PdoCheckTest = Bench;

ec_sync_info_t* listOf(const Pdos& pdos, ec_sync_info_t* sync, std::vector<ec_pdo_info_t>& infos,
                       std::vector<std::vector<ec_pdo_entry_info_t>>& entries) {
  for (const sim::Pdo& pdo : pdos) {
    entries.emplace_back();
    for (const sim::Entry& entry : pdo.entries) {
      entries.back().push_back({entry.index, entry.subindex, entry.bitLength});
    }
    infos.push_back({pdo.index, static_cast<unsigned int>(pdo.entries.size()), entries.back().data()});
  }
  sync->n_pdos = static_cast<unsigned int>(infos.size());
  sync->pdos = infos.data();
  return sync;
}

void configure(ec_slave_config_t* configuration, const Pdos& outputs, const Pdos& inputs) {
  std::vector<ec_pdo_info_t> infos[2];
  std::vector<std::vector<ec_pdo_entry_info_t>> entries[2];
  ec_sync_info_t syncs[] = {{2, EC_DIR_OUTPUT, 0, nullptr, EC_WD_DEFAULT},
                            {3, EC_DIR_INPUT, 0, nullptr, EC_WD_DEFAULT}};
  listOf(outputs, &syncs[0], infos[0], entries[0]);
  listOf(inputs, &syncs[1], infos[1], entries[1]);
  EXPECT_EQ(ecrt_slave_config_pdos(configuration, 2, syncs), 0);
}

sim::Slave checking() {
  sim::Slave slave = twoWay();
  slave.defaultMapping[1].pdos = ownInputs;
  slave.furtherPdos = {
      {0x1601, {{0x7001, 1, 16}}, false, {0x1600}}, {0x1602, {one}}, {0x1A01, {{0x6001, 1, 8}}}};
  slave.objects = {{0x2000, 1, {0, 0}}};
  return slave;
}

TEST_F(PdoCheckTest, ASlaveGoesBeyondPreopOnlyWithTheLengthsThatItNeeds) {
  for (const Case& row : cases) {
    SCOPED_TRACE(row.what);
    sim::reset();
    sim::Slave slave = checking();
    row.change(slave);
    bus().addSlave(slave);
    request();
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, 0, vendor, 1);
    configure(configuration, row.outputs, row.inputs);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    ::testing::internal::CaptureStderr();
    const std::size_t before = allocations();
    exchange(60);
    EXPECT_EQ(allocations(), before) << "slaves climb in the middle of the cycle";
    std::string expected;
    std::istringstream lines(row.log);
    for (std::string line; std::getline(lines, line, '|');) {
      expected += "EtherCAT " + line.insert(line.find(' '), " 0-0:") + "\n";
    }
    expected += row.code == 0 ? "" : row.code == 0x1D ? refused + "1D.\n" : refused + "1E.\n";
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), expected);
    const ec_slave_config_state_t state = stateOf(configuration);
    EXPECT_EQ(state.al_state, row.code == 0 ? 8 : 2);
    EXPECT_EQ(state.error_flag, row.code != 0);
    ec_slave_info_t info{};
    EXPECT_EQ(ecrt_master_get_slave(master, 0, &info), 0);
    EXPECT_EQ(info.al_state, row.code == 0 ? 8 : 0x12);
    EXPECT_EQ(bus().registers(0, 0x0134, 2)[0], row.code);
    ecrt_master_deactivate(master);
    EXPECT_EQ(bus().registers(0, 0x0134, 2)[0], 0);
  }
}

TEST_F(PdoCheckTest, WhatWasWrittenStaysUntilTheSlaveLosesPower) {
  sim::Slave slave = checking();
  slave.pdoConfig = true;
  slave.coe = true;
  bus().addSlave(slave);
  const auto stateWith = [&](const Pdos& outputs) {
    request();
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, 0, vendor, 1);
    configure(configuration, outputs, ownInputs);
    EXPECT_EQ(ecrt_master_activate(master), 0);
    exchange(60);
    const unsigned int state = stateOf(configuration).al_state;
    ecrt_release_master(master);
    return state;
  };
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(stateWith({{0x1600, {two}}}), 8U);
  EXPECT_EQ(stateWith({{0x16FF, {one, two}}}), 2U) << "not written: 0x1600 still has one byte";
  bus().setPowered(0, false);
  bus().setPowered(0, true);
  EXPECT_EQ(stateWith({{0x16FF, {one, two}}}), 8U);
  ::testing::internal::GetCapturedStderr();
}

TEST_F(PdoCheckTest, ABusFileSaysWhatASlaveHas) {
  const std::string path = ::testing::TempDir() + "simulation_pdos.json";
  const std::string slave = R"({"vendor_id":"0xE00","product_code":1,"sync_managers":[
    {"index":2,"direction":"output","pdos":[{"index":"0x1600","fixed":true,"entries":[
      {"index":"0x7000","subindex":1,"bit_length":8},{"index":0,"bit_length":0},
      {"index":"0x7000","subindex":2,"bit_length":8}]}]},
    {"index":3,"direction":"input","pdos":[{"index":"0x1A00","entries":[
      {"index":"0x6000","subindex":1,"bit_length":16}]}]}],
    "further_pdos":[{"index":"0x1601","excludes":["0x1600"],"entries":[{"index":"0x7001","bit_length":16}]}])";
  std::ofstream(path) << R"({"timing":"fast","slaves":[)" << slave << R"(,"coe":true,"pdo_assign":true},)"
                      << slave << R"(,"objects":[],"pdo_config":true},)" << slave
                      << R"(,"checks_lengths":false},)" << slave << "}," << slave
                      << R"(,"coe":true,"pdo_assign":true}]})";
  ASSERT_EQ(sim::loadBusFile(path), "");
  std::remove(path.c_str());
  request();
  const Pdos outputs[] = {{{0x1600, {one, two}}, {0x1601, {{0x7001, 0, 16}}}},
                          {{0x1600, {one}}},
                          {{0x1600, {one}}},
                          {{0x1600, {one}}},
                          {{0x1601, {{0x7001, 0, 16}}}}};
  for (std::uint16_t position = 0; position < 5; ++position) {
    configure(ecrt_master_slave_config(master, 0, position, vendor, 1), outputs[position], ownInputs);
  }
  ASSERT_EQ(ecrt_master_activate(master), 0);
  ::testing::internal::CaptureStderr();
  exchange(60);
  const std::string log = ::testing::internal::GetCapturedStderr();
  EXPECT_THAT(log, ::testing::HasSubstr("0-0: PDO configuration failed. (0x1601 refused in SM2)"));
  EXPECT_THAT(log, ::testing::HasSubstr("0-1: Failed to clear the mapping of PDO 0x1600."));
  EXPECT_EQ(log.find("WARNING 0-3"), std::string::npos) << "no objects, nothing to write to";
  for (unsigned int position = 0; position < 5; ++position) {
    EXPECT_EQ(bus().alState(position), position == 2 || position == 4 ? 8 : 2) << position;
  }
}

} // namespace
