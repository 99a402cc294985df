// Wrong command lines and files: exit status 2 and exactly one line on standard error.
#include "Program.h"

namespace {

TEST(Usage, AWrongCommandLineGetsOneLineAndStatusTwo) {
  const auto notJson = scratch("not.json", "{ \"slaves\": [ oops");
  const auto contradiction = scratch(
      "twice.json", R"({"slaves": [{"vendor_id": 1, "product_code": 1, "revision": 1, "model": "magic"}]})");
  const auto notXml = scratch("not.xml", "this is\nno\nXML <a><b>");
  const auto otherRoot = scratch("root.xml", "<Other/>");
  const auto drive = machine("servo_drive.xml");
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"run", "--eni", drive});
    return more;
  };
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"describe, scan or run", {}},
      {"not expected", {"fly"}},
      {"FILE", {"describe"}},
      {"--eni", {"scan"}},
      {"--eni", {"run", "--cycles", "10"}},
      {"not expected", run({"--fast"})},
      {"--cycles", run({"--cycles", "none"})},
      {"--cycles", run({"--cycles", "0"})},
      {"excludes", run({"--cycles", "10", "--seconds", "1"})},
      {"--seconds", run({"--seconds", "-1"})},
      {"--period soon", run({"--period", "soon"})},
      {"--period 1h", run({"--period", "1h"})},
      {"between 100us and 4s", run({"--period", "99us"})},
      {"between 100us and 4s", run({"--period", "5s"})},
      {"--priority", run({"--priority", "100"})},
      {"--cpu", run({"--cpu", "-1"})},
      {"--master", run({"--master", "65536"})},
      {"SLAVE:ENTRY", run({"--watch", "Statusword"})},
      {"SLAVE:ENTRY", run({"--watch", "-1:Statusword"})},
      {"SLAVE:ENTRY=VALUE", run({"--set", "0:Controlword"})},
      {"not a number", run({"--set", "0:Controlword=on"})},
      {"slaves 0 to 0", run({"--watch", "1:Statusword"})},
      {"no entry \"Speed\"", run({"--watch", "0:Speed"})},
      {"is an input", run({"--set", "0:Statusword=1"})},
      {"no description",
       {"run", "--eni", machine("coupler.xml"), "--bus", machine("machine.json"), "--watch", "5:X"}},
      {"/nowhere.json", run({"--bus", "/nowhere.json"})},
      {notJson, run({"--bus", notJson})},
      {contradiction, run({"--bus", contradiction})},
      {"No such file", {"run", "--eni", "/nowhere.xml"}},
      {"directory", {"scan", "--eni", "/tmp"}},
      {"line 1", {"scan", "--eni", notXml}},
      {"Can't find EthercatInfo Node", {"scan", "--eni", otherRoot}},
  };
  for (const auto& [reason, arguments] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const auto outcome = ighBus(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, testing::HasSubstr(reason));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  }
  for (const auto& path : {notJson, contradiction, notXml, otherRoot})
    std::remove(path.c_str());
}

} // namespace
