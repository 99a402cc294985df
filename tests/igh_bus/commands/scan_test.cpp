#include "Program.h"

namespace {

TEST(Scan, ListsSlavesWithTheirDescriptionsAndWarnsOfAliases) {
  const auto bus = scratch("bus.json", R"({"slaves": [
    {"vendor_id": "0x00000B0B", "product_code": "0x100", "revision": "0x00010000", "name": "COUPLER"},
    {"vendor_id": "0x00000B0B", "product_code": "0x200", "revision": "0x00010001", "name": "DI", "alias": 77}]})");
  const auto outcome = ighBus("scan --eni @coupler.xml @terminals.xml --bus " + bus);
  std::remove(bus.c_str());
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, testing::MatchesRegex("0  0:0   PREOP  \\+  COUPLER  EM100\n"
                                                 "1  77:1  PREOP  \\+  DI       no description\n"
                                                 "slave 1 has alias 77: .* offline\n"));
}

} // namespace
