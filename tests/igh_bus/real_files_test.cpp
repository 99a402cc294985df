// Description files of real devices, where the build was given a folder of them.
#include "Program.h"

#include <gmock/gmock.h>
#include <sstream>

namespace {

std::string file(const std::string& name) {
  return std::string(IGH_TEST_ESI_DIR) + "/" + name;
}

bool absent() {
  return std::string(IGH_TEST_ESI_DIR).empty();
}

// "SLAVE:NAME" of every entry with a convertible type, read from the printed description. The bus has every
// device once, in the order in which describe prints them.
std::vector<std::string> watchable(const std::string& description) {
  std::vector<std::string> names;
  int slave = -1;
  std::istringstream lines(description);
  for (std::string line; std::getline(lines, line);) {
    char type[16] = "";
    slave += line.rfind("Device \"", 0) == 0 ? 1 : 0;
    if (std::sscanf(line.c_str(), "    0x%*4x:%*2x %*u %15s", type) == 1 &&
        std::string(" SINT USINT INT UINT DINT UDINT REAL LREAL ").find(" " + std::string(type) + " ") !=
            std::string::npos) {
      const auto quote = line.find('"');
      names.push_back(std::to_string(slave) + ":" + line.substr(quote + 1, line.rfind('"') - quote - 1));
    }
  }
  return names;
}

TEST(RealFiles, AreAllDescribed) {
  if (absent())
    GTEST_SKIP() << "no folder of real description files";
  for (const char* name : {"Beckhoff_EJ1xxx.xml", "Beckhoff_ER4xxx.xml", "ETG2001_ModulesSlots_CiA402.xml",
                           "Elmo_ECAT_00010420_V11.xml", "LC10E_V1.xml", "MetalMusings_EaserCAT_3000.xml",
                           "NI9144.xml", "WAGO_750_354.xml"}) {
    const auto outcome = ighBus({"describe", file(name)});
    EXPECT_EQ(outcome.status, 0) << name << outcome.err;
    EXPECT_THAT(outcome.out, testing::HasSubstr("Device \"")) << name;
  }
}

TEST(RealFiles, ReachOpWithEveryConvertibleEntryWatched) {
  if (absent())
    GTEST_SKIP() << "no folder of real description files";
  const std::pair<const char*, std::size_t> expected[] = {{"MetalMusings_EaserCAT_3000.xml", 22},
                                                          {"Elmo_ECAT_00010420_V11.xml", 24},
                                                          {"LC10E_V1.xml", 13},
                                                          {"NI9144.xml", 0},
                                                          {"ETG2001_ModulesSlots_CiA402.xml", 0}};
  for (const auto& [name, entries] : expected) {
    const auto names = watchable(ighBus({"describe", file(name)}).out);
    EXPECT_GE(names.size(), entries) << name;
    std::vector<std::string> arguments{"run", "--eni", file(name), "--cycles", "200"};
    for (const auto& watch : names)
      arguments.insert(arguments.end(), {"--watch", watch});
    const auto outcome = ighBus(arguments);
    EXPECT_EQ(outcome.status, 0) << name << outcome.err;
    EXPECT_THAT(outcome.out, testing::ContainsRegex("cycle +[0-9]+  OP\n")) << name;
    for (const auto& watch : names)
      EXPECT_THAT(outcome.out, testing::HasSubstr("  " + watch + " = ")) << name;
  }
}

} // namespace
