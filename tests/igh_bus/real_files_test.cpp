// Description files of real devices, where the build was given a folder of them.
#include "Program.h"

#include <sstream>

namespace {

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

TEST(RealFiles, AreDescribedAndReachOpWithEveryConvertibleEntryWatched) {
  const std::string folder = IGH_TEST_ESI_DIR;
  if (folder.empty())
    GTEST_SKIP() << "no folder of real description files";
  // No device refuses its own description: none assigns PDOs that it excludes. Four let their PDOs be
  // configured and have two fixed ones each, which they do not let the master clear.
  struct File {
    const char* name;
    std::size_t entries; // convertible ones, at least
    std::size_t fixed;   // PDOs
  };
  const File expected[] = {{"MetalMusings_EaserCAT_3000.xml", 22, 0},
                           {"Elmo_ECAT_00010420_V11.xml", 24, 8},
                           {"LC10E_V1.xml", 13, 0},
                           {"NI9144.xml", 0, 0},
                           {"ETG2001_ModulesSlots_CiA402.xml", 0, 0},
                           {"Beckhoff_EJ1xxx.xml", 0, 0},
                           {"Beckhoff_ER4xxx.xml", 0, 0},
                           {"WAGO_750_354.xml", 0, 0}};
  for (const auto& [name, entries, fixed] : expected) {
    SCOPED_TRACE(name);
    const auto description = ighBus({"describe", folder + "/" + name});
    EXPECT_EQ(description.status, 0) << description.err;
    EXPECT_THAT(description.out, testing::HasSubstr("Device \""));
    const auto names = watchable(description.out);
    EXPECT_GE(names.size(), entries);
    std::vector<std::string> arguments{"run", "--eni", folder + "/" + name, "--cycles", "200"};
    for (const auto& watch : names)
      arguments.insert(arguments.end(), {"--watch", watch});
    const auto outcome = ighBus(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, testing::ContainsRegex("cycle +[0-9]+  OP\n"));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), static_cast<long>(fixed))
        << outcome.err;
    for (const auto& watch : names)
      EXPECT_THAT(outcome.out, testing::HasSubstr("  " + watch + " = "));
  }
}

} // namespace
