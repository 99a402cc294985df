// Description files of real devices, where the build was given a folder of them.
#include "Program.h"

#include <regex>

namespace {

// "SLAVE:NAME" of every entry with a convertible type, read from the printed description. The bus has every
// device once, in the order in which describe prints them.
std::vector<std::string> watchable(const std::string& description) {
  const std::regex line("\nDevice \"|\n    0x\\S+ +\\d+  (?:U?[SD]?INT|L?REAL) [^\"\n]*\"([^\n]*)\"");
  std::vector<std::string> names;
  int slave = -1;
  for (std::sregex_iterator it(description.begin(), description.end(), line), end; it != end; ++it)
    (*it)[1].matched ? names.push_back(std::to_string(slave) + ":" + it->str(1)) : void(++slave);
  return names;
}

TEST(RealFiles, AreDescribedAndReachOpWithEveryConvertibleEntryWatched) {
  const std::string folder = IGH_TEST_ESI_DIR;
  if (folder.empty())
    GTEST_SKIP() << "no folder of real description files";
  // No device refuses its own description: none assigns PDOs that it excludes. Four let their PDOs be
  // configured and have two fixed ones each, which they do not let the master clear.
  std::size_t entries = 0;
  std::ptrdiff_t fixed = 0;
  for (const std::string name :
       {"MetalMusings_EaserCAT_3000", "Elmo_ECAT_00010420_V11", "LC10E_V1", "NI9144",
        "ETG2001_ModulesSlots_CiA402", "Beckhoff_EJ1xxx", "Beckhoff_ER4xxx", "WAGO_750_354"}) {
    const auto file = "'" + folder + "/" + name + ".xml'";
    SCOPED_TRACE(name);
    const auto description = ighBus("describe " + file);
    EXPECT_EQ(description.status, 0) << description.err;
    const auto names = watchable(description.out);
    entries += names.size();
    std::string line = "run --cycles 200 --eni " + file;
    for (const auto& watch : names)
      line += " --watch '" + watch + "'";
    const auto outcome = ighBus(line);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, testing::ContainsRegex("cycle +[0-9]+  OP\n"));
    fixed += std::count(outcome.err.begin(), outcome.err.end(), '\n');
    for (const auto& watch : names)
      EXPECT_THAT(outcome.out, testing::HasSubstr("  " + watch + " = "));
  }
  EXPECT_GE(entries, 59U);
  EXPECT_EQ(fixed, 8);
}

} // namespace
