#include "ENIObject/DescriptionSupport.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

using namespace description_test;

namespace {

class HostileInput : public testing::Test {
protected:
  CMasterENIObject store{capture};
};

std::string repeat(const std::string& text, int times) {
  std::string all;
  while (times-- > 0) {
    all += text;
  }
  return all;
}

} // namespace

TEST_F(HostileInput, EntityBombsAreRefusedAndExternalEntitiesNotRead) {
  const auto loadWith = [this](const std::string& declarations, const std::string& version,
                               const std::string& name) {
    return load(store, "<!DOCTYPE EtherCATInfo [" + declarations + "]><EtherCATInfo Version=\"" + version +
                           "\"><Vendor><Id>2</Id><Name>" + name + "</Name></Vendor></EtherCATInfo>");
  };
  std::string levels;
  for (int level = 1; level < 12; ++level) {
    levels += "<!ENTITY e" + std::to_string(level) + " \"" +
              repeat("&e" + std::to_string(level - 1) + ";", 10) + "\">";
  }
  const std::string endless = "<!ENTITY e10 \"&e11;\"><!ENTITY e11 \"&e10;\">";
  const std::string flat = "<!ENTITY e11 \"" + std::string(50000, 'x') + "\">";
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr(); // libxml2 tells every fault there
  for (const std::string& declarations :
       {"<!ENTITY e0 \"0123456789\">" + levels, "<!ENTITY e0 \"\">" + levels, endless}) {
    EXPECT_FALSE(loadWith(declarations, "1", "&e11;") || loadWith(declarations, "&e11;", "n"));
    EXPECT_EQ(messages(), (Messages{{0, "Can't open ENI-file!"}}));
  }
  EXPECT_FALSE(loadWith(flat, "1", repeat("&e11;", 10000)));
  EXPECT_FALSE(load(store, repeat("<a>", 100000)) || load(store, repeat("<a>", 1000) + repeat("</a>", 1000)));
  EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("Parser xml error:", 0), 0U);
  testing::internal::GetCapturedStderr();

  EXPECT_TRUE(loadWith(flat, "1", "a&e11;b")) << "a modest expansion is fine";
  const TemporaryFile secret("secret");
  ASSERT_TRUE(loadWith("<!ENTITY e SYSTEM \"" + std::string(secret.path()) + "\">", "1", "a&e;b"));
  EXPECT_EQ(messages().back().second, "Vendor id = 0x2, Vendor name = ab");
}

// A cost that grows with the square of the elements would meet the time limit of ctest.
TEST_F(HostileInput, VeryManyElementsLoadInLinearTimeAndBoundedMemory) {
  for (const std::string& content : {repeat("<a/>\n", 400000), repeat("x<a/>", 400000),
                                     "<Slots>" + repeat("<Slot/>\n", 250000) + "</Slots>",
                                     "<RxPdo Sm=\"2\">" + repeat("<Entry/>", 250000) + "</RxPdo>"}) {
    EXPECT_TRUE(load(store, description(device("1", "1", content))));
    store.removeAllENIObject();
  }
  const std::string pdo = "<RxPdo Sm='2'>" + repeat("<Entry/>", 20000) + "</RxPdo>";
  const std::string slots =
      "<Slots>" + repeat("<Slot><ModuleIdent>1</ModuleIdent></Slot>", 20000) + "</Slots>";
  const std::string expanding = description(device("1", "1", slots), module("1", pdo));
  EXPECT_TRUE(load(store, expanding)) << "four hundred million entries, if they were placed";
  const std::size_t placed = (std::size_t{64} * 1024 * 1024 + 64 * expanding.size()) / (20001 * 256);
  EXPECT_EQ(complaints()[1].second,
            "Device slots expand too far, left out from slot " + std::to_string(placed + 1) +
                " of 20000 on. (VendorId = 0x2, ProductCode = 0x1, RevisionNo = 0x1, class = T)");
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 1)->getSlavePDOEntryCount(), placed * 20000);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  EXPECT_LT(usage.ru_maxrss, 1000000) /* kilobytes */ << "some 100 MB; most of it with sanitizers is theirs";
}
