// The cycle allocates nothing: every allocation of the process is counted while a thread asks for it.
#include "Fixture.h"

#include <cstdlib>

namespace {

thread_local bool counting = false;
thread_local unsigned int allocations = 0;

} // namespace

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer has its own allocator
// These stand before the C library's own for every library of the process; operator new ends here as well.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
  return allocations += counting ? 1U : 0U, __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
  return allocations += counting ? 1U : 0U, __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) {
  return allocations += counting ? 1U : 0U, __libc_realloc(memory, size);
}
}
#pragma GCC visibility pop
#endif

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
      counting = true;
      for (int i = 0; i < 250; ++i) {
        igh_master_exchange(0, readAndWrite, &data);
        igh_master_pdo_send(0, data.out, i);
      }
      counting = false;
    }
    EXPECT_EQ(allocations, 0U) << (exchangeMode ? "exchange" : "normal") << " mode";
    EXPECT_GT(data.sum, 900.0);
    startOver();
  }
#if !defined(__SANITIZE_ADDRESS__)
  // Through volatile pointers, or a compiler leaves them out.
  void* (*volatile const viaMalloc)(std::size_t) = std::malloc;
  void* (*volatile const viaNew)(std::size_t) = ::operator new;
  counting = true;
  void* const memory = viaMalloc(1);
  void* const object = viaNew(1);
  counting = false;
  std::free(memory);
  ::operator delete(object);
  EXPECT_EQ(allocations, 2U); // the counter counts
#endif
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
  allocations = 0;
  counting = true;
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
  counting = false;
  EXPECT_EQ(allocations, 0U);
  EXPECT_EQ(data.sum, 100000.0);
  EXPECT_EQ(value, 0x0201);
  for (const unsigned int number : transfers) {
    EXPECT_GE(number, 99800U / 12); // four cycles each
  }
}
