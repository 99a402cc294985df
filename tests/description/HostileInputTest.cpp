#include "DescriptionSupport.h"

#include <gtest/gtest.h>

#include <libxml/xmlerror.h>

#include <chrono>
#include <random>
#include <sys/resource.h>

using namespace description_test;

namespace {

void ignoreError(void*, char const*, ...) {}

/* libxml2 tells every fault of every variant on standard error. */
class HostileInput : public testing::Test {
protected:
  HostileInput() { xmlSetGenericErrorFunc(nullptr, ignoreError); }
  ~HostileInput() override { xmlSetGenericErrorFunc(nullptr, nullptr); }

  CMasterENIObject store{capture};
};

std::string const slot = "<Slot><ModuleIdent>1</ModuleIdent></Slot>";

std::string repeat(std::string const& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

std::string withEntities(std::string const& declarations, std::string const& version,
                         std::string const& name) {
  return "<!DOCTYPE EtherCATInfo [" + declarations + "]><EtherCATInfo Version=\"" + version +
         "\"><Vendor><Id>2</Id><Name>" + name + "</Name></Vendor></EtherCATInfo>";
}

} // namespace

TEST_F(HostileInput, EntityBombsAreRefusedAndExternalEntitiesNotRead) {
  std::string bomb = "<!ENTITY e0 \"0123456789\">";
  std::string empty = "<!ENTITY e0 \"\">";
  for (int level = 1; level < 12; ++level) {
    std::string const next = "<!ENTITY e" + std::to_string(level) + " \"" +
                             repeat("&e" + std::to_string(level - 1) + ";", 10) + "\">";
    bomb += next;
    empty += next;
  }
  std::string const flat = "<!ENTITY e11 \"" + std::string(50000, 'x') + "\">";
  std::string const endless = "<!ENTITY e10 \"&e11;\"><!ENTITY e11 \"&e10;\">";
  testing::internal::CaptureStdout();
  for (std::string const& declarations : {bomb, empty, endless}) {
    EXPECT_FALSE(load(store, withEntities(declarations, "1", "&e11;")));
    EXPECT_FALSE(load(store, withEntities(declarations, "&e11;", "n")));
    EXPECT_EQ(messages(), (std::vector<Message>{{0, "Can't open ENI-file!"}}));
  }
  EXPECT_FALSE(load(store, withEntities(flat, "1", repeat("&e11;", 10000))));
  std::string const output = testing::internal::GetCapturedStdout();
  EXPECT_EQ(output.rfind("Parser xml error:", 0), 0U);

  EXPECT_TRUE(load(store, withEntities(flat, "1", "a&e11;b"))) << "a modest expansion is fine";
  TemporaryFile const secret("secret");
  std::string const external = "<!ENTITY e SYSTEM \"" + std::string(secret.path()) + "\">";
  ASSERT_TRUE(load(store, withEntities(external, "1", "a&e;b")));
  EXPECT_EQ(messages().back().second, "Vendor id = 0x2, Vendor name = ab");
}

TEST_F(HostileInput, VeryManyElementsLoadInLinearTimeAndBoundedMemory) {
  std::string const wide[] = {repeat("<a/>\n", 200000), repeat("x<a/>", 200000),
                              "<Slots>" + repeat("<Slot/>\n", 100000) + "</Slots>",
                              "<RxPdo Sm=\"2\">" + repeat("<Entry/>", 100000) + "</RxPdo>"};
  for (std::string const& content : wide) {
    auto const start = std::chrono::steady_clock::now();
    EXPECT_TRUE(load(store, description(device("1", "1", content))));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << content.substr(0, 20);
    store.removeAllENIObject();
  }
  std::string const pdo = "<RxPdo Sm='2'>" + repeat("<Entry/>", 20000) + "</RxPdo>";
  std::string const slots = "<Slots>" + repeat(slot, 20000) + "</Slots>";
  std::string const expanding = description(device("1", "1", slots), module("1", pdo));
  EXPECT_TRUE(load(store, expanding)) << "four hundred million entries, if they were placed";
  std::size_t const placed = (std::size_t{64} * 1024 * 1024 + 64 * expanding.size()) / (20001 * 256);
  EXPECT_EQ(complaints()[1].second,
            "Device slots expand too far, left out from slot " + std::to_string(placed + 1) +
                " of 20000 on. (VendorId = 0x2, ProductCode = 0x1, RevisionNo = 0x1, class = T)");
  EXPECT_EQ(store.findSlaveENIObject(2, 1, 1)->getSlavePDOEntryCount(), placed * 20000);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  EXPECT_LT(usage.ru_maxrss, 1000000) /* kilobytes */ << "some 100 MB; most of it with sanitizers is theirs";
}

TEST_F(HostileInput, OddContentGivesAResultAndNoMore) {
  std::string const name(10000, 'n');
  EXPECT_TRUE(
      load(store, description(device(name, "-1", name) + device("99999999999999999999", "#x1FFFFFFFF", ""),
                              "<" + name + " " + name + "=''/>")));
  EXPECT_NE(store.findSlaveENIObject(2, 0, 0xFFFFFFFF), nullptr);
  EXPECT_NE(store.findSlaveENIObject(2, 0xFFFFFFFF, 0xFFFFFFFF), nullptr);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(load(store, repeat("<a>", 100000)));
  EXPECT_FALSE(load(store, repeat("<a>", 1000) + repeat("</a>", 1000)));
  EXPECT_FALSE(load(store, "<EtherCATInfo>\xff\xfe\x80</EtherCATInfo>"));
  EXPECT_FALSE(load(store, std::string(1000, '\0')));
  testing::internal::GetCapturedStdout();
}

TEST_F(HostileInput, DamagedFilesNeverCrashTheLoader) {
  std::string const pdo = R"(<RxPdo Sm="2" Fixed="true"><Index DependOnSlot="true">#x1600</Index>
      <Entry><Index>#x7000</Index><SubIndex>1</SubIndex><BitLen>8</BitLen><Name>&e;</Name></Entry></RxPdo>)";
  std::string const mode = "<Dc><OpMode><Name>&f;</Name></OpMode></Dc>";
  std::string const valid =
      "<!DOCTYPE EtherCATInfo [<!ENTITY e \"ent\"><!ENTITY f \"&e;&e;\">]>" +
      description(device("1", "1", "<Slots>" + slot + "</Slots>" + pdo + mode), module("1", pdo));
  ASSERT_TRUE(load(store, valid));
  testing::internal::CaptureStdout();
  for (std::size_t length = 0; length < valid.size(); length += 5) {
    EXPECT_FALSE(load(store, valid.substr(0, length))) << length;
  }
  std::mt19937 random(1);
  int loaded = 0;
  for (unsigned int variant = 0; variant < 600; ++variant) {
    std::string damaged = valid;
    std::string const harmless = "0123456789#x";
    std::string const markup = "<>/\"&;! ";
    for (auto flips = variant % 2 + 1; flips > 0; --flips) {
      char const byte = static_cast<char>(random());
      char const choice[] = {byte, harmless[random() % harmless.size()], markup[random() % markup.size()]};
      damaged[random() % damaged.size()] = choice[variant % 3];
    }
    CMasterENIObject fresh(capture);
    loaded += static_cast<int>(load(fresh, damaged));
  }
  testing::internal::GetCapturedStdout();
  EXPECT_GT(loaded, 30) << "some damage is harmless: the variants reach the whole loader";
}
