#include "Program.h"

#include <ecrt.h>
#include <ethercat_simulation/Simulation.h>
#include <nlohmann/json.hpp>

using namespace ethercat_simulation;

namespace {

TEST(Scan, ShowsSlavesAsTheyAreBesideARunningApplicationAndWhatTheFilesDescribe) {
  reset();
  Slave coupler;
  std::tie(coupler.vendorId, coupler.productCode, coupler.revisionNumber, coupler.name) =
      std::tuple(0x0B0B, 0x100, 0x10000, "COUPLER");
  Slave slave;
  std::tie(slave.vendorId, slave.productCode, slave.revisionNumber) = std::tuple(0x0B0B, 0x200, 0x10001);
  std::tie(slave.serialNumber, slave.alias) = std::tuple(9, 77);
  slave.defaultMapping = {{0, Direction::input, {{0x1A00, {{0x6000, 1, 8}, {0, 0, 4}}}}}};
  slave.coe = slave.distributedClocks = false;
  for (const Slave& added : {coupler, slave, coupler})
    bus().addSlave(added);
  const auto hiding = scratch(
      "hiding.xml", "<EtherCATInfo><Vendor><Id>#x0B0B</Id></Vendor><Descriptions><Devices><Device><Type "
                    "ProductCode='#x200' RevisionNo='4'>D</Type><HideType RevisionNo='4'/></Device>"
                    "</Devices></Descriptions></EtherCATInfo>");
  const auto files = " --eni @coupler.xml @terminals.xml " + hiding;
  const std::string alias = "slave 1 has alias 77: .* offline\n";
  ec_master_t* application = ecrt_request_master(0);
  const std::pair<std::string, std::string> shown[] = {
      {"scan", "0  0:0   PREOP  \\+  COUPLER\n1  77:0  PREOP  \\+  0x00000b0b:0x00000200\n2  77:1  PREOP  "
               "\\+  COUPLER\n" +
                   alias},
      {"scan" + files,
       "0 .*  COUPLER                EM100\n1 .*  no description\n2 .*\nslave 1 has no [^\n]* revision "
       "0x00010001; described revisions of this product: 0x00010000, 0x00000004 \\(hidden by a "
       "HideType\\)\n" +
           alias +
           "igh_bus adapt would make 2 of 2 entries reachable, 0 are now, and 1 of 1 devices whole, 0 are "
           "now\n"},
      {"scan -v --pdos",
       "0 .* yes, 64 bits\n    mailbox            CoE\n.*\n    SM0 output\n    SM1 input\n1  77:0  INIT \\+ "
       "ERROR  .*vendor             0x00000B0B\n    product            0x00000200\n"
       "    revision           0x00010001\n    serial number      0x00000009\n    alias              77\n"
       "    state              INIT \\+ ERROR, AL status code 0x001E: input configuration is wrong.*"
       "    port 1             MII, link up, loop open, signal yes, to slave 2\n    distributed clock  no\n"
       "    mailbox            none\n    E-bus current      0 mA\n    SM0 input\n      PDO 0x1A00\n"
       "        0x6000:01    8 bits\n        gap          4 bits\n2 .*" +
           alias}};
  for (const auto& [line, pattern] : shown) {
    bus().setAlError(1, 1, line == "scan -v --pdos" ? 0x001E : 0);
    const auto outcome = runHere(line);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, testing::MatchesRegex(pattern));
  }
  bus().setResponding(0, false);
  bus().setAlError(1, 1, 0x8001);
  auto data = nlohmann::ordered_json::parse(runHere("scan -v --pdos --json" + files).out).at("slaves");
  std::remove(hiding.c_str());
  for (const int port : {3, 2, 0})
    data[1].at("ports").erase(static_cast<std::size_t>(port));
  EXPECT_EQ(
      data[1].dump(),
      R"({"position":1,"alias":77,"name":"","vendor_id":2827,"product_code":512,"revision":65537,)"
      R"("serial":9,"al_state":"INIT","al_error":true,"error_flag":false,"description":null,)"
      R"("described_revisions":[{"revision":65536,"hidden":false},{"revision":4,"hidden":true}],)"
      R"("al_status_code":32769,"ports":[{"kind":"MII","link_up":true,"loop_closed":false,"signal":true,)"
      R"("next_slave":2}],"clock_bits":0,"mailbox":[],"current_on_ebus":0,"sync_managers":[{"index":0,)"
      R"("direction":"input","pdos":[{"index":6656,"entries":[{"index":24576,"subindex":1,)"
      R"("bit_length":8},{"index":0,"subindex":0,"bit_length":4}]}]}]})");
  EXPECT_EQ(data[0].at("description").dump() + data[0].at("clock_bits").dump(), "\"EM100\"null");
  EXPECT_EQ(bus().misuse().total(), 0U);
  ecrt_release_master(application);
  reset();
}

} // namespace
