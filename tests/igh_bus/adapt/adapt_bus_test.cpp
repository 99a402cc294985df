// igh_bus adapt on the slaves of a bus: revisions, modules, header, report, refusals.
#include "Descriptions.h"

#include <filesystem>
#include <regex>
#include <sys/stat.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using namespace descriptions;

namespace {

std::string revision(const std::string& number, const std::string& entry, const std::string& more = "") {
  return device(more + pdos("Tx Sm=\"3\" {1A00 }[6000:1:" + entry + "]"),
                "ProductCode=\"#x7\" RevisionNo=\"" + number + "\"");
}

std::string busSlave(const std::string& product, const std::string& revision, const std::string& more = "") {
  return R"({"vendor_id": 9, "product_code": )" + product + R"(, "revision": )" + revision + more + "}";
}

// The description of the highest revision below, though hidden, under the slave's own number; what the slave
// itself says of its modules; and a header that compilers take.
TEST(Adapt, ServesTheSlavesOfABus) {
  const auto input =
      scratch("maker.xml",
              file(revision("2", "1:BOOL:Old") +
                       revision("4", "1:BOOL:a/*b?\"\\ \xC3\xA9", "<HideType RevisionNo=\"4\"/>") +
                       revision("9", "8:USINT:New") + device(modular, "ProductCode=\"#x8\" RevisionNo=\"1\""),
                   moduleList));
  const std::string inputs =
      R"(, "sync_managers": [{"index": 3, "direction": "input", "pdos": [{"index": 6656, "entries": )"
      R"([{"index": 24576, "subindex": 1, "bit_length": 1}]}]}])";
  const auto bus = scratch(
      "bus.json", R"({"slaves": [)" + busSlave("7", "8", inputs) + ", " +
                      busSlave("7", "8", R"(, "alias": 3)" + inputs) + ", " +
                      busSlave("8", "1",
                               R"(, "objects": [{"index": "0xF050", "value": 2, "type": "USINT"}, )"
                               R"({"index": "0xF050", "subindex": 1, "value": 0, "type": "UDINT"}, )"
                               R"({"index": "0xF050", "subindex": 2, "value": 32, "type": "UDINT"}])") +
                      "]}");
  const auto output = scratch("machine.xml");
  const auto header = scratch("machine.h");
  const std::string base = "adapt --bus " + bus + " --eni " + input + " ";
  const auto outcome = ighBus(base + "--json -o " + output + " --header " + header);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto result = Json::parse(outcome.out);
  ASSERT_EQ(result["devices"].size(), 2U);
  const auto& first = result["devices"][0];
  EXPECT_EQ(first["slaves"], Json({0, 1}));
  EXPECT_EQ(first["hidden"], true);
  EXPECT_THAT(changesOf(first), HasSubstr("revision device: 0x00000004 -> 0x00000008"));
  EXPECT_THAT(changesOf(first), HasSubstr("alias slave 1: 3"));
  EXPECT_EQ(entriesOf(result["devices"][1]), "3.0 USINT 2nd V");
  EXPECT_EQ(result["summary"]["reachable_before"], 0);
  const auto described = ighBus("describe " + input + " " + output).out;
  EXPECT_THAT(described, HasSubstr("igh_bus adapt would make 5 of 5 entries reachable, 1 are now"));
  EXPECT_THAT(described.substr(described.find("would make") + 1),
              AllOf(HasSubstr("\"*/DEV\" 0x00000007 revision 0x00000008: everything can be used"),
                    Not(HasSubstr("would make"))));

  EXPECT_THAT(ighBus("scan --bus " + bus + " --eni " + input).out,
              HasSubstr("would make 3 of 3 entries reachable"));
  EXPECT_THAT(ighBus("scan --bus " + bus + " --eni " + output).out, Not(HasSubstr("would make")));

  EXPECT_THAT(readFile(header), HasSubstr("#define S1_DEV_POSITION 1\n"));
  EXPECT_THAT(readFile(header), HasSubstr("#define S1_DEV_A_B_MASK 0x1U\n"));
  for (const std::string compiler : {"cc -std=c99 -x c", "c++ -std=c++17 -x c++"}) {
    const auto line = "echo 'const char* machine = S1_DEV_A_B;' | " + compiler +
                      " -Wall -Wextra -Wpedantic -Werror -fsyntax-only -include ";
    EXPECT_EQ(std::system((line + header + " -").c_str()), 0);
  }

  // The nearest revision is not hidden, and yet none of the slave's; modules are told by another object too.
  const auto configured =
      scratch("bus.json", std::regex_replace(readFile(bus), std::regex("0xF050"), "0xF030"));
  const auto any = Json::parse(ighBus(base + "--json --revision any").out);
  EXPECT_EQ(any["devices"][0]["described_revision"], "0x00000009");
  EXPECT_EQ(any["devices"][0]["reachable_before"], 0);
  EXPECT_EQ(entriesOf(any["devices"][1]), "3.0 USINT 2nd V");
  const auto before = readFile(output);
  const auto pipe = output + ".pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::pair<std::string, std::string> refusals[] = {
      {"slave 0 \"\" (vendor 0x00000009, product 0x00000007, revision 0x00000008) is not described: "
       "described are "
       "revisions 0x00000002, 0x00000004, 0x00000009 (see --revision); nor are 1 more slaves",
       base + "--revision exact -o " + output},
      {"share one description", base + "--mode 0=none -o " + output},
      {"there are 0 to 2", base + "--mode 3=none -o " + output},
      {"has the modes none", base + "--mode 0=DC --mode 1=DC -o " + output},
      {"has no such PDO", base + "--pdo 0=0x1A05 --pdo 1=0x1A05 -o " + output},
      {"no module of that ident", base + "--module 2:1=0x99 -o " + output},
      {"has 4 slots", base + "--module 2:5=0x20 -o " + output},
      {"SLAVE:SLOT", base + "--module 2=0x20 -o " + output},
      {"--revision", base + "--revision newest -o " + output},
      {"with -o", base},
      {"is one of the inputs", base + "-o " + input},
      {"is one of the inputs", base + "-o " + output + " --header " + input},
      {"is a directory", base + "-o /tmp"},
      {"No such file", base + "-o /nowhere/machine.xml"},
      {"two outputs", base + "-o " + output + " --header " + output},
      {"not a regular file", base + "-o " + pipe},
      {"cannot be made", base + "-o " + output + " --report " + input},
      {"No such file", "adapt --all --eni /nowhere.xml -o " + output},
      {"line 1", "adapt --all --eni " + bus + " -o " + output},
      {"excludes", base + "--all -o " + output}};
  for (const auto& [reason, line] : refusals) {
    const auto refused = ighBus(line);
    EXPECT_EQ(refused.status, 2) << line;
    EXPECT_THAT(refused.err, HasSubstr(reason)) << line;
    EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1) << line << refused.err;
    EXPECT_EQ(readFile(output), before) << line;
  }
  std::remove(pipe.c_str());
  const auto link = input + ".link";
  ASSERT_EQ(::link(input.c_str(), link.c_str()), 0);
  EXPECT_THAT(ighBus(base + "-o " + link).err, HasSubstr("is one of the inputs"));
  // The same input gives the same bytes, through a link too, and leaves nothing beside them.
  std::remove(link.c_str());
  ASSERT_EQ(symlink(output.c_str(), link.c_str()), 0);
  const auto report = output + "_report/";
  EXPECT_EQ(ighBus(base + "-o " + link + " --report " + report).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(readFile(output), before);
  EXPECT_EQ(Json::parse(readFile(report + "adapt.json"))["devices"], result["devices"]);
  EXPECT_THAT(readFile(report + "adapt.txt"), HasSubstr("  slaves 0, 1  \"*/DEV\"  alias  slave 1: 3 ("));
  std::filesystem::remove_all(report);
  for (const auto& entry : std::filesystem::directory_iterator(testing::TempDir()))
    EXPECT_EQ(entry.path().string().find(output + "."), std::string::npos) << entry.path();
  for (const auto& path : {input, bus, output, header, link})
    std::remove(path.c_str());
}

} // namespace
