#include "Bench.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

using namespace bench;

namespace {

class BusFileTest : public Bench {
protected:
  ~BusFileTest() override { std::remove(path.c_str()); }
  // What is wrong with this text, without the name of the file.
  std::string complaint(const std::string& text) const {
    sim::reset();
    std::ofstream(path, std::ios::binary) << text;
    const std::string line = sim::loadBusFile(path);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(ecrt_request_master(0) != nullptr, line.empty());
    ::testing::internal::GetCapturedStderr();
    return line.rfind(path + ": ", 0) == 0 ? line.substr(path.size() + 2) : line;
  }

  std::string path = ::testing::TempDir() + "simulation_bus_" + std::to_string(getpid()) + ".json";
};

TEST_F(BusFileTest, TheFileOfTheEnvironmentMakesTheMastersThatHaveNoBus) {
  std::ofstream(path) <<
      R"({"masters":[{"index":0,"slaves":[]},{"index":2,"slaves":[
    {"vendor_id":"0x00000E00","product_code":"1","revision":3,"serial":4,"alias":5,"name":"First","model":"counter",
     "distributed_clocks":false,"sync_managers":[{"index":3,"direction":"input","pdos":[
       {"index":"0x1A00","entries":[{"index":"0x6000","subindex":1,"bit_length":8},{"index":0,"bit_length":4}]}]}]},
    {"vendor_id":1,"product_code":2}]}]})";
  ::setenv("ETHERCAT_SIMULATION_BUS", path.c_str(), 1);
  bus().addSlave(twoWay());
  master = ecrt_request_master(2);
  ASSERT_NE(master, nullptr);
  ec_slave_info_t info{};
  ASSERT_EQ(ecrt_master_get_slave(master, 0, &info), 0);
  EXPECT_EQ(info.revision_number * 100 + info.serial_number * 10 + info.alias, 345U);
  EXPECT_STREQ(info.name, "First");
  EXPECT_EQ(sim::bus(2).slaveCount(), 2U);
  EXPECT_EQ(bus().slaveCount(), 1U) << "this one had a bus";
  domain = ecrt_master_create_domain(master);
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 1), 0);
  EXPECT_EQ(ecrt_domain_size(domain), 2U);
}

TEST_F(BusFileTest, ABadFileGivesOneLineAndNoBus) {
  const std::string ids = R"("vendor_id":1,"product_code":2)";
  const std::pair<std::string, std::string> texts[] = {
      {"{\n \"slaves\": [,]}",
       "2:13: syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
      {"{}", "/: neither \"masters\" nor \"slaves\" is there"},
      {R"({"masters":[],"slaves":[]})", "/slaves: contradicts or is unknown beside \"masters\""},
      {R"({"masters":[{"slaves":[]}]})", "/masters/0: \"index\" is missing"},
      {R"({"masters":[{"index":1,"slaves":[]},{"index":"0x1","slaves":[]}]})",
       "/masters/1/index: another master has this index"},
      {R"({"slaves":[{"alias":1,)" + ids + R"(},{"alias":1,)" + ids + "}]}",
       "/slaves/1/alias: another slave has this alias"},
      {std::string(1'000'000, '['),
       "/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0: is nested too deeply"},
  };
  for (const auto& [text, expected] : texts) {
    EXPECT_EQ(complaint(text), expected) << text.substr(0, 200);
  }
  const std::pair<const char*, const char*> slaves[] = {
      {R"("vendor_id":3)", "/vendor_id: stands there twice"},
      {R"("co\nlour":1)", "/co?lour: unknown key"},
      {R"("alias":65536)", "/alias: must be between 0 and 65535"},
      {R"("serial":"0x1FFFFFFFFFFFFFFFF")",
       "/serial: must be an integer, or a string with a decimal or 0x hexadecimal one"},
      {R"("name":7)", "/name: must be a string"},
      {R"("model":"servo")", "/model: must be \"loopback\", \"counter\" or \"drive\""},
      {R"("drive":{})", "/drive: belongs to the model \"drive\""},
      {R"("sync_managers":[{"index":2,"direction":"input"},{"index":2,"direction":"output"}])",
       "/sync_managers/1/index: another sync manager of the slave has this index"},
      {R"("objects":[{"index":1,"bytes":"0 1"}])", "/objects/0/bytes: must be pairs of hexadecimal digits"},
      {R"("objects":[{"index":1,"bytes":"","value":1}])",
       "/objects/0: must have either \"bytes\", or \"value\" and \"type\""},
      {R"("objects":[{"index":1,"bytes":"1f 2E"},{"index":1,"subindex":0,"bytes":""}])",
       "/objects/1: another object of the slave has this index and subindex"},
      {R"("model":"drive","objects":[{"index":"0x6040","value":0,"type":"USINT"}])",
       "/objects/0: must have 2 bytes in a drive"},
  };
  for (const auto& [keys, expected] : slaves) {
    EXPECT_EQ(complaint(R"({"slaves":[{)" + ids + "," + keys + "}]}"), std::string("/slaves/0") + expected);
  }
  const std::pair<const char*, const char*> faults[] = {
      {R"("lost_frame")", ": must have one of \"at\", \"every\" and \"probability\""},
      {R"("lost_frame","at":1,"slave":0)", "/slave: does not belong to \"lost_frame\""},
      {R"("power_off","at":1,"slave":1)", "/slave: there is no slave at this position"},
      {R"("sdo_abort","at":1,"slave":0,"index":1)", "/index: the slave has no such object"},
      {R"("quick_stop","at":1,"slave":0)", "/slave: the slave is no drive"},
  };
  const std::string slave = R"("slaves":[{)" + ids + "}]}";
  for (const auto& [keys, expected] : faults) {
    EXPECT_EQ(complaint(R"({"faults":[{"kind":)" + std::string(keys) + "}]," + slave),
              std::string("/faults/0") + expected);
  }
  EXPECT_EQ(complaint("{" + slave), "");
  EXPECT_EQ(sim::loadBusFile(path), path + ": /slaves: master 0 has a bus already");

  sim::reset();
  ::setenv("ETHERCAT_SIMULATION_BUS", "/nonexistent/bus.json", 1);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ecrt_request_master(0), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "/nonexistent/bus.json: cannot be opened: No such file or directory\n");
  std::remove(path.c_str());
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(sim::loadBusFile(path), path + ": is not a regular file") << "a pipe without a writer";
  std::remove(path.c_str());
}

TEST_F(BusFileTest, TheSchemaHasEveryKeyAndNameThatTheReaderKnows) {
  const auto contents = [](const std::string& file) {
    std::ifstream stream(std::string(IGH_TEST_SOURCE_DIR) + "/" + file);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  const std::string schema = contents("docs/bus-file.schema.json");
  const std::string source = contents("simulation/src/busfile/BusFile.cpp") +
                             contents("simulation/src/busfile/BusFileSlave.cpp") +
                             contents("simulation/src/busfile/BusFileFaults.cpp");
  const std::regex words("[ ({](\"[a-z_]+\")"); // keys, and names of models, kinds, ...
  std::size_t keys = 0;
  for (std::sregex_iterator word(source.begin(), source.end(), words), end; word != end; ++word, ++keys) {
    EXPECT_NE(schema.find((*word)[1].str()), std::string::npos) << (*word)[1];
  }
  EXPECT_GT(keys, 50U);
}

} // namespace
