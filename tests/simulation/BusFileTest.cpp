#include "Bench.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sys/stat.h>

using namespace bench;

namespace {

class BusFileTest : public Bench {
protected:
  std::string write(const std::string& text) const {
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  // What is wrong with this text, without the name of the file.
  std::string complaint(const std::string& text) const {
    sim::reset();
    const std::string line = sim::loadBusFile(write(text));
    EXPECT_EQ(line.find('\n'), std::string::npos);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(ecrt_request_master(0) != nullptr, line.empty());
    ::testing::internal::GetCapturedStderr();
    return line.rfind(path + ": ", 0) == 0 ? line.substr(path.size() + 2) : line;
  }
  static std::string slave(const std::string& more) {
    return R"({"slaves":[{"vendor_id":1,"product_code":2)" + more + "}]}";
  }

  static std::string fault(const std::string& keys) {
    return R"({"faults":[{)" + keys + R"(}],"slaves":[{"vendor_id":1,"product_code":2}]})";
  }

  std::string path = ::testing::TempDir() + "simulation_bus.json";
};

TEST_F(BusFileTest, TheFileOfTheEnvironmentMakesTheMastersThatHaveNoBus) {
  write(
      R"({"masters":[{"index":0,"slaves":[]},{"index":2,"climb_cycles":1,"reactivation_unmapped":false,"slaves":[
    {"vendor_id":"0x00000E00","product_code":"1","revision":3,"serial":4,"alias":5,"name":"First","model":"counter",
     "distributed_clocks":false,"sync_managers":[{"index":3,"direction":"input","pdos":[
       {"index":"0x1A00","entries":[{"index":"0x6000","subindex":1,"bit_length":8},{"index":0,"bit_length":4}]}]}]},
    {"vendor_id":1,"product_code":2}]}]})");
  ::setenv("ETHERCAT_SIMULATION_BUS", path.c_str(), 1);
  bus().addSlave(twoWay());
  master = ecrt_request_master(2);
  ASSERT_NE(master, nullptr);
  ec_slave_info_t info{};
  ASSERT_EQ(ecrt_master_get_slave(master, 0, &info), 0);
  EXPECT_EQ(info.vendor_id, 0xE00U);
  EXPECT_EQ(info.revision_number, 3U);
  EXPECT_EQ(info.serial_number, 4U);
  EXPECT_EQ(info.alias, 5U);
  EXPECT_STREQ(info.name, "First");
  EXPECT_EQ(sim::bus(2).slaveCount(), 2U);
  EXPECT_EQ(bus().slaveCount(), 1U) << "this one had a bus";
  domain = ecrt_master_create_domain(master);
  unsigned int offset = 9;
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 1, &offset), 0);
  EXPECT_EQ(ecrt_domain_size(domain), 2U);
  ASSERT_EQ(ecrt_master_activate(master), 0);
  exchange(6);
  EXPECT_EQ(sim::bus(2).alState(0), 8);
}

TEST_F(BusFileTest, ABadFileGivesOneLineAndNoBus) {
  const std::pair<std::string, std::string> cases[] = {
      {"",
       "1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal"},
      {"{\n \"slaves\": [,]}",
       "2:13: syntax error while parsing value - unexpected ','; expected '[', '{', or a literal"},
      {"[1e999]", "1:6: number overflow parsing '1e999'"},
      {"[]", "/: must be an object"},
      {"{}", "/: neither \"masters\" nor \"slaves\" is there"},
      {R"({"masters":[],"slaves":[]})", "/slaves: contradicts or is unknown beside \"masters\""},
      {R"({"masters":[]})", "/masters: has no master"},
      {R"({"masters":[{"slaves":[]}]})", "/masters/0: \"index\" is missing"},
      {R"({"masters":[{"index":1,"slaves":[]},{"index":"0x1","slaves":[]}]})",
       "/masters/1/index: another master has this index"},
      {slave(R"(,"vendor_id":3)"), "/slaves/0/vendor_id: stands there twice"},
      {slave(R"(,"co\nlour":1)"), "/slaves/0/co?lour: unknown key"},
      {slave(R"(,"alias":65536)"), "/slaves/0/alias: must be between 0 and 65535"},
      {slave(R"(,"serial":"0x1FFFFFFFFFFFFFFFF")"),
       "/slaves/0/serial: must be an integer, or a string with a decimal or 0x hexadecimal one"},
      {slave(R"(,"name":7)"), "/slaves/0/name: must be a string"},
      {slave(R"(,"model":"servo")"), "/slaves/0/model: must be \"loopback\", \"counter\" or \"drive\""},
      {slave(R"(,"sync_managers":[{"index":2,"direction":"both"}])"),
       "/slaves/0/sync_managers/0/direction: must be \"output\" or \"input\""},
      {slave(R"(,"sync_managers":[{"index":2,"direction":"input"},{"index":2,"direction":"output"}])"),
       "/slaves/0/sync_managers/1/index: another sync manager of the slave has this index"},
      {slave(R"(,"objects":[{"index":1,"bytes":"0 1"}])"),
       "/slaves/0/objects/0/bytes: must be pairs of hexadecimal digits"},
      {slave(R"(,"objects":[{"index":1,"bytes":"","value":1}])"),
       "/slaves/0/objects/0: must have either \"bytes\", or \"value\" and \"type\""},
      {slave(R"(,"objects":[{"index":1,"bytes":"1f 2E"},{"index":1,"subindex":0,"bytes":""}])"),
       "/slaves/0/objects/1: another object of the slave has this index and subindex"},
      {slave(R"(,"alias":1},{"vendor_id":1,"product_code":1,"alias":1)"),
       "/slaves/1/alias: another slave has this alias"},
      {R"({"reference_clock":{"drift_ppm":-1000.5},"slaves":[]})",
       "/reference_clock/drift_ppm: must be a number between -1000.0 and 1000.0"},
      {slave(R"(,"model":"drive","objects":[{"index":"0x6040","value":0,"type":"USINT"}])"),
       "/slaves/0/objects/0: must have 2 bytes in a drive"},
      {slave(R"(,"drive":{})"), "/slaves/0/drive: belongs to the model \"drive\""},
      {fault(R"("kind":"lost_frame")"), "/faults/0: must have one of \"at\", \"every\" and \"probability\""},
      {fault(R"("kind":"lost_frame","at":1,"slave":0)"),
       "/faults/0/slave: does not belong to \"lost_frame\""},
      {fault(R"("kind":"power_off","at":1,"slave":1)"),
       "/faults/0/slave: there is no slave at this position"},
      {fault(R"("kind":"sdo_abort","at":1,"slave":0,"index":1)"),
       "/faults/0/index: the slave has no such object"},
      {std::string(1'000'000, '['),
       "/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0: is nested "
       "too deeply"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(complaint(text), expected) << text.substr(0, 200);
  }
  EXPECT_EQ(complaint(slave("")), "");
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

TEST_F(BusFileTest, TheSchemaHasEveryKeyThatTheReaderAccepts) {
  const auto contents = [](const std::string& file) {
    std::ifstream stream(std::string(IGH_TEST_SOURCE_DIR) + "/" + file);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  const std::string schema = contents("docs/bus-file.schema.json");
  const std::regex lists(R"(expectObject\(\s*\{([^}]*)\})");
  const std::regex words("\"([a-z_]+)\"");
  std::size_t keys = 0;
  for (const char* file : {"BusFile.cpp", "BusFileSlave.cpp", "BusFileFaults.cpp"}) {
    const std::string source = contents(std::string("simulation/src/") + file);
    for (std::sregex_iterator list(source.begin(), source.end(), lists), end; list != end; ++list) {
      const std::string text = (*list)[1];
      for (std::sregex_iterator word(text.begin(), text.end(), words); word != end; ++word, ++keys) {
        EXPECT_NE(schema.find("\"" + (*word)[1].str() + "\": "), std::string::npos) << (*word)[1];
      }
    }
  }
  EXPECT_GT(keys, 50U);
}

} // namespace
