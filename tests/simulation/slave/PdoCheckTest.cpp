// What a slave makes of the PDOs that the master gives it.
#include "Bench.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <unistd.h>

using namespace bench;

namespace {

// 0x1600 and 0x1A00 are assigned, 0x1601 excludes 0x1600, 0x1602 is fixed.
const std::string lists = R"(,"sync_managers":[
  {"index":2,"direction":"output","pdos":[{"index":"0x1600","entries":[
    {"index":"0x7000","subindex":1,"bit_length":8},{"index":"0x7000","subindex":2,"bit_length":8}]}]},
  {"index":3,"direction":"input","pdos":[{"index":"0x1A00","entries":[
    {"index":"0x6000","subindex":1,"bit_length":16}]}]}],
  "further_pdos":[{"index":"0x1601","excludes":["0x1600"],"entries":[{"index":"0x7001","bit_length":16}]},
    {"index":"0x1602","fixed":true,"entries":[{"index":"0x7000","subindex":1,"bit_length":8},
      {"index":0,"bit_length":0}]},
    {"index":"0x1A01","entries":[{"index":"0x6001","bit_length":8}]}])";
const std::string coe = lists + R"(,"coe":true)";
const std::string config = coe + R"(,"pdo_config":true)";
const std::string assign = coe + R"(,"pdo_assign":true)";
const std::string objects = R"(,"objects":[{"index":"0x2000","subindex":1,"bytes":"00 00"}])";

struct Pdo {
  std::uint16_t index;
  std::vector<ec_pdo_entry_info_t> entries;
};
using Pdos = std::vector<Pdo>;
const ec_pdo_entry_info_t one{0x7000, 1, 8}, two{0x7000, 2, 8}, both{0x7000, 1, 16}, gap{0, 0, 4};
const Pdo own{0x1600, {one, two}}, shorter{0x1600, {two}}, wider{0x1600, {both}};
const Pdo exclusive{0x1601, {{0x7001, 0, 16}}}, fixedOne{0x1602, {one, {0, 0, 0}}};
const Pdos in{{0x1A00, {{0x6000, 1, 16}}}};

// Warnings, each with a | behind it.
const std::string keepsMapping = "Slave does not support changing the PDO mapping! (0x1600)|";
const std::string keepsAssignment = "Slave does not support assigning PDOs! (SM2)|";
const std::string unknown = "Failed to map 0x7005:01 into PDO 0x1600, which is empty now.|";
const std::string otherWidth = "Failed to map 0x7000:01 into PDO 0x1600, which is empty now.|";
const std::string readOnly = "Failed to clear the mapping of PDO 0x1602.|";
const std::string firstRefused = "PDO configuration failed. (0x1600 refused in SM2)|";
const std::string secondRefused = "PDO configuration failed. (0x1601 refused in SM2)|";
const std::string absentRefused = "Slave does not support changing the PDO mapping! (0x16FF)|"
                                  "PDO configuration failed. (0x16FF refused in SM2)|";

const struct Case {
  const char* what;
  std::string keys; // of the slave in the bus file
  Pdos outputs;     // on sync manager 2
  Pdos inputs;      // on 3
  unsigned int code;
  std::string log = {};
} cases[] = {
    {"the same bytes, cut otherwise", lists, {wider}, in, 0},
    {"a byte less", lists, {shorter}, in, 0x1D},
    {"no inputs", lists, {own}, {}, 0x1E},
    {"a chip that compares nothing", lists + R"(,"checks_lengths":false)", {shorter}, in, 0},
    {"a slave that lists nothing", objects, {shorter}, in, 0},
    {"a mapping that cannot be changed", lists + objects, {wider}, in, 0, keepsMapping},
    {"an assignment that cannot", coe, {exclusive}, in, 0, keepsAssignment},
    {"a shorter mapping, written", config, {shorter}, in, 0},
    {"an entry from the objects", config + objects, {{0x1600, {one, gap, {0x2000, 1, 16}}}}, in, 0},
    {"no such entry empties the PDO", config, {{0x1600, {one, gap, {0x7005, 1, 4}}}}, in, 0x1D, unknown},
    {"an entry of another width", config, {wider}, in, 0x1D, otherWidth},
    {"a fixed PDO", config + R"(,"pdo_assign":true)", {{0x1602, {both}}}, in, 0x1D, readOnly},
    {"another PDO assigned", assign, {fixedOne}, in, 0},
    {"a PDO that names the one before it", assign, {own, exclusive}, in, 0x1D, secondRefused},
    {"a PDO that is named by the one before it", assign, {exclusive, own}, in, 0x1D, firstRefused},
    {"left out behind it", assign, {{0x16FF, {}}}, {{0x1A01, {{0x6001, 0, 8}}}}, 0x1E, absentRefused},
};
constexpr std::uint16_t SHORTENED = 7; // of the cases

class PdoCheckTest : public Bench {
protected:
  ec_slave_config_t* configure(std::uint16_t position, const Pdos& outputs, const Pdos& inputs) {
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, position, VENDOR, 1);
    for (const bool input : {false, true}) {
      std::vector<ec_pdo_info_t> infos;
      for (const Pdo& pdo : input ? inputs : outputs) {
        infos.push_back({pdo.index, static_cast<unsigned int>(pdo.entries.size()), pdo.entries.data()});
      }
      const ec_sync_info_t sync{static_cast<std::uint8_t>(input ? 3 : 2),
                                input ? EC_DIR_INPUT : EC_DIR_OUTPUT, static_cast<unsigned int>(infos.size()),
                                infos.data(), EC_WD_DEFAULT};
      EXPECT_EQ(ecrt_slave_config_pdos(configuration, 1, &sync), 0);
    }
    return configuration;
  }
};

TEST_F(PdoCheckTest, ASlaveGoesBeyondPreopOnlyWithTheLengthsThatItNeedsAndKeepsWhatWasWritten) {
  std::string slaves;
  for (const Case& row : cases) {
    slaves += (slaves.empty() ? "" : ",") + (R"({"vendor_id":"0xE00","product_code":1)" + row.keys + "}");
  }
  const std::string path = ::testing::TempDir() + "simulation_pdos_" + std::to_string(getpid()) + ".json";
  std::ofstream(path) << R"({"timing":"fast","slaves":[)" << slaves << "]}";
  ASSERT_EQ(sim::loadBusFile(path), "");
  std::remove(path.c_str());
  request();
  for (const Case& row : cases) {
    const auto position = static_cast<std::uint16_t>(configurations.size());
    configurations.push_back(configure(position, row.outputs, row.inputs));
  }
  ASSERT_EQ(ecrt_master_activate(master), 0);
  ::testing::internal::CaptureStderr();
  const std::size_t before = allocations();
  exchange(100);
  EXPECT_EQ(allocations(), before) << "slaves climb in the middle of the cycle";
  std::istringstream lines(::testing::internal::GetCapturedStderr());
  std::vector<std::string> logs(configurations.size());
  for (std::string line; std::getline(lines, line);) {
    logs.at(std::stoul(line.substr(line.find("0-") + 2))) += line.substr(line.find(": ") + 2) + "|";
  }
  for (unsigned int i = 0; i < configurations.size(); ++i) {
    const Case& row = cases[i];
    SCOPED_TRACE(row.what);
    const std::string refusal =
        "Failed to set SAFEOP state, slave refused state change with AL status code 0x00";
    EXPECT_EQ(logs[i], row.log + (row.code == 0 ? "" : refusal + (row.code == 0x1D ? "1D.|" : "1E.|")));
    EXPECT_EQ(stateOf(configurations[i]).al_state, row.code == 0 ? 8 : 2);
    EXPECT_EQ(stateOf(configurations[i]).error_flag, row.code != 0);
    ec_slave_info_t info{};
    EXPECT_EQ(ecrt_master_get_slave(master, static_cast<std::uint16_t>(i), &info), 0);
    EXPECT_EQ(info.al_state, row.code == 0 ? 8 : 0x12);
    EXPECT_EQ(bus().registers(i, 0x0134, 2)[0], row.code);
  }
  ecrt_master_deactivate(master);
  EXPECT_EQ(bus().registers(1, 0x0134, 2)[0], 0);
  // What was written stays until the slave loses power.
  ecrt_release_master(master);
  ::testing::internal::CaptureStderr();
  for (const unsigned int state : {2U, 8U}) {
    request();
    ec_slave_config_t* configuration = configure(SHORTENED, {{0x16FF, {one, two}}}, in);
    EXPECT_EQ(ecrt_master_activate(master), 0);
    exchange(60);
    EXPECT_EQ(stateOf(configuration).al_state, state) << "0x1600 still has one byte at first";
    ecrt_release_master(master);
    bus().setPowered(SHORTENED, false);
    bus().setPowered(SHORTENED, true);
  }
  ::testing::internal::GetCapturedStderr();
}

} // namespace
