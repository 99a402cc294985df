// The cycle allocates nothing: every allocation of the program is counted meanwhile.
#include "Allocator.h"

#include "scenario/Fixture.h"

using ethercat_simulation::SdoFault;
using namespace scenario;

namespace {

struct Cycle {
  std::uint32_t in;
  std::uint32_t out;
  double sum = 0;
};

void readAndWrite(void* data) {
  Cycle& cycle = *static_cast<Cycle*>(data);
  double read = 0;
  igh_master_pdo_recv(0, cycle.in, &read);
  cycle.sum += read;
  igh_master_pdo_send(0, cycle.out, cycle.sum);
}

} // namespace

TEST_F(Scenario, ExchangesAllocateNothingWithTransfersUnderWayAndAfterHandlesChanged) {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {3, 4}}};
  for (const bool exchangeMode : {false, true}) {
    build({device, {0x70, {{"A", "UINT"}, {"B", "DINT"}}, {{"C", "INT"}}}},
          {0, 100000, false, false, exchangeMode});
    std::array<std::uint32_t, 3> ids{};
    capture([&] {
      EXPECT_TRUE(igh_master_scan(0, nullptr) && igh_master_config_all_slave(0));
      EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 1, DATA_TYPE_UINT, 0, true, &ids[0]));
      EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 2, DATA_TYPE_UINT, 0, false, &ids[1]));
      EXPECT_TRUE(igh_master_create_raw_sdo_request_complete(0, 0, 0x2000, 4, 0, true, &ids[2]));
      EXPECT_TRUE(igh_master_active(0));
    });
    cycleUntil(8);
    Cycle data{handle(0, "In", true), handle(0, "Out", false)};
    bus().setInputs(0, {1});
    cycle(2);
    std::array<bool, 3> done{true, true, true};
    std::array<unsigned int, 3> transfers{};
    double value = 0;
    std::array<std::uint8_t, 4> object{};
    for (int change = 0; change < 4; ++change) { // created and destroyed while active
      if (change == 3) {
        igh_master_destroy_pdo_info(0, 2, false);
      } else {
        handle(1, std::string(1, static_cast<char>('A' + change)), change == 2);
      }
      bus().setSdoFault(0, 0x2000, 1, change == 1 ? SdoFault::abort : SdoFault::none);
      const std::size_t before = memory::allocations();
      for (int i = 0; i < 1000; ++i) {
        for (std::size_t k = 0; k < done.size(); ++k) {
          transfers.at(k) += done.at(k) ? 1U : 0U;
        }
        if (done[0]) {
          igh_master_sdo_recv(0, ids[0], &value, &done[0]);
        }
        if (done[1]) {
          igh_master_sdo_send(0, ids[1], i, &done[1]);
        }
        if (done[2]) {
          igh_master_raw_sdo_recv(0, ids[2], object.data(), 4, &done[2]);
        }
        igh_master_exchange(0, readAndWrite, &data);
      }
      EXPECT_EQ(memory::allocations(), before) << (exchangeMode ? "exchange" : "normal") << " mode";
    }
    EXPECT_EQ(data.sum, 4000);
    EXPECT_EQ(value, 0x0201);
    EXPECT_THAT(transfers, testing::Each(testing::Gt(200U)));
    startOver();
  }
}
