// Wrong command lines and files, and buses that cannot be run: exit status 2 or 3 and exactly one line on
// standard error.
#include "Program.h"

#include <sys/stat.h>

namespace {

TEST(Usage, WhatCannotBeDoneGetsOneLineAndItsStatus) {
  const auto notJson = scratch("not.json", "{ \"slaves\": [ oops");
  const auto empty = scratch("empty.json", R"({"slaves": []})");
  const auto notXml = scratch("not.xml", "this is\nno\nXML <a><b>");
  const auto otherRoot = scratch("root.xml", "<Other/>");
  const auto pipe = notJson + ".pipe"; // without a writer
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string run = "run --eni @servo_drive.xml ";
  const std::tuple<int, std::string, std::string> cases[] = {
      {2, "describe, scan or run", ""},
      {2, "not expected", "fly"},
      {2, "FILE", "describe"},
      {2, "--eni", "run --cycles 10"},
      {2, "--cycles: '0': use a whole number from 1 on (try igh_bus run --help)\n", run + "--cycles 0"},
      {2, "--cycles: '1h': use a whole number from 1 on", run + "--cycles 1h"},
      {2, "--max-errors: '-1': use a whole number from 0 on", run + "--max-errors -1"},
      {2, "--seconds: '1h': use a number above 0", run + "--seconds 1h"},
      {2, "--fly was not expected (try igh_bus run --help)\n", "run --fly"},
      {2, "reed was not expected (try igh_bus reg --help)\n", "reg reed 0"},
      {2, "SLAVE is required (try igh_bus sdo read --help)\n", "sdo read"},
      {2, "value 70000 for 0:Controlword: UINT holds 0 to 65535", run + "--set 0:Controlword=70000"},
      {2, "value 0.5 for 0:Controlword: UINT holds whole", run + "--set 0:Controlword=0.5"},
      {2, "value nan for 0:Controlword", run + "--set 0:Controlword=nan"},
      {2, "excludes", run + "--cycles 10 --seconds 1"},
      {2, "--seconds", run + "--seconds -1"},
      {2, "--period soon", run + "--period soon"},
      {2, "--period 1h", run + "--period 1h"},
      {2, "between 100us and 4s", run + "--period 99us"},
      {2, "between 100us and 4s", run + "--period 5s"},
      {2, "--priority", run + "--priority 100"},
      {2, "--cpu", run + "--cpu -1"},
      {2, "--master", run + "--master 65536"},
      {2, "SLAVE:ENTRY", run + "--watch Statusword"},
      {2, "SLAVE:ENTRY=VALUE", run + "--set 0:Controlword"},
      {2, "not a number", run + "--set 0:Controlword=on"},
      {2, "slaves 0 to 0", run + "--watch 1:Statusword"},
      {2, "no entry \"Speed\"", run + "--watch 0:Speed"},
      {2, "is an input", run + "--set 0:Statusword=1"},
      {2, "no description", "run --eni @coupler.xml --bus @machine.json --watch 5:X"},
      {2, "/nowhere.json", run + "--bus /nowhere.json"},
      {2, notJson, run + "--bus " + notJson},
      {2, "is not a regular file", run + "--bus " + pipe},
      {2, notXml, run + "--report " + notXml}, // a file where a folder is to be made
      {2, "No such file", "run --eni /nowhere.xml"},
      {2, "directory", "scan --eni /tmp"},
      {2, "line 1", "scan --eni " + notXml},
      {2, "Can't find EthercatInfo Node", "scan --eni " + otherRoot},
      {3, "no slave answers", run + "--bus " + empty},
      {3, "names a bus", "scan"},
      {2, "no simulated bus of this index", "scan --master 3 --bus @machine.json"},
      {3, "never reached OP", "run --cycles 5" + onMachine},
  };
  for (const auto& [status, reason, line] : cases) {
    const auto outcome = ighBus(line);
    EXPECT_EQ(outcome.status, status) << line;
    EXPECT_TRUE(status == 3 || outcome.out.find("callback ran") == std::string::npos) << line; // nothing ran
    EXPECT_THAT(outcome.err, testing::HasSubstr(reason)) << line;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << line << outcome.err;
  }
  EXPECT_THAT(ighBus("--version").out, testing::MatchesRegex("igh_bus [0-9.]+\n"));
  for (const char* const output : {"run --eni @servo_drive.xml --cycles 1500", "--help"}) {
    const auto full = runProgram("/bin/sh -c '" IGH_BUS_PROGRAM " $* >/dev/full' - " + std::string(output));
    EXPECT_EQ(full.status, 2) << full.err;
    EXPECT_EQ(full.err, "igh_bus: standard output: not all of it could be written\n");
    const auto none = runProgram("/bin/sh -c 'exec " IGH_BUS_PROGRAM " $* >&-' - " + std::string(output));
    EXPECT_EQ(none.err, full.err) << none.status;
    const auto closed = runProgram("/bin/sh -c '{ (while echo; do :; done); " IGH_BUS_PROGRAM
                                   " $*; echo $? >&2; } | true' - " +
                                   std::string(output));
    EXPECT_THAT(closed.err, testing::HasSubstr("not all of it could be written\n2\n"));
  }
  for (const auto& path : {notJson, empty, notXml, otherRoot, pipe})
    std::remove(path.c_str());
}

} // namespace
