// The cycle allocates nothing: every allocation of the thread is counted meanwhile.
#include "Allocator.h"

#include "scenario/Fixture.h"

#include <cstdlib>

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

TEST_F(Scenario, ThousandExchangesAllocateNothingAlsoAfterHandlesChanged) {
  for (const bool exchangeMode : {false, true}) {
    startInOp({byteIo, {0x70, {{"A", "UINT"}, {"B", "DINT"}}, {{"C", "INT"}}}},
              {0, 100000, false, false, exchangeMode});
    Cycle data{handle(0, "In", true), handle(0, "Out", false)};
    bus().setInputs(0, {1});
    for (int change = 0; change < 4; ++change) { // created and destroyed while active
      if (change == 3) {
        igh_master_destroy_pdo_info(0, 2, false);
      } else {
        handle(1, std::string(1, static_cast<char>('A' + change)), change == 2);
      }
      memory::count(true);
      for (int i = 0; i < 250; ++i) {
        igh_master_exchange(0, readAndWrite, &data);
        igh_master_pdo_send(0, data.out, i);
      }
      memory::count(false);
    }
    EXPECT_EQ(memory::counted(), 0U) << (exchangeMode ? "exchange" : "normal") << " mode";
    EXPECT_GT(data.sum, 900.0);
    startOver();
  }
  // Through a volatile pointer, or a compiler leaves it out.
  void* (*volatile const viaNew)(std::size_t) = ::operator new;
  memory::count(true);
  ::operator delete(viaNew(1));
  memory::count(false);
  EXPECT_EQ(memory::counted(), 1U); // the counter counts
}

TEST_F(Scenario, SdoTransfersBesideProcessDataAllocateNothing) {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {3, 4}}};
  build({device});
  std::uint32_t ids[3] = {};
  capture([&] {
    igh_master_scan(0, nullptr);
    igh_master_config_all_slave(0);
    EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 1, DATA_TYPE_UINT, 0, true, &ids[0]));
    EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 2, DATA_TYPE_UINT, 0, false, &ids[1]));
    EXPECT_TRUE(igh_master_create_raw_sdo_request_complete(0, 0, 0x2000, 4, 0, true, &ids[2]));
    igh_master_active(0);
  });
  Cycle data{handle(0, "In", true), handle(0, "Out", false)};
  cycleUntil(8);
  bus().setInputs(0, {1});
  cycle(2);
  bool done[3] = {true, true, true};
  unsigned int transfers[3] = {};
  double value = 0;
  unsigned char object[4] = {};
  memory::count(true);
  for (int i = 0; i < 100000; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      transfers[k] += done[k] ? 1U : 0U;
    }
    if (done[0]) {
      igh_master_sdo_recv(0, ids[0], &value, &done[0]);
    }
    if (done[1]) {
      igh_master_sdo_send(0, ids[1], i % 1000, &done[1]);
    }
    if (done[2]) {
      igh_master_raw_sdo_recv(0, ids[2], object, 4, &done[2]);
    }
    igh_master_exchange(0, readAndWrite, &data);
    if (i == 50000 || i == 50100) {
      bus().setSdoFault(0, 0x2000, 1,
                        i == 50000 ? ethercat_simulation::SdoFault::abort
                                   : ethercat_simulation::SdoFault::none);
    }
  }
  memory::count(false);
  EXPECT_EQ(memory::counted(), 0U);
  EXPECT_EQ(data.sum, 100000.0);
  EXPECT_EQ(value, 0x0201);
  for (const unsigned int number : transfers) {
    EXPECT_GE(number, 99800U / 12); // four cycles each
  }
}
