#include "scenario/Fixture.h"

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <thread>

using namespace scenario;

namespace {

bool terminateRequested(std::uint16_t id) {
  return igh_master_is_request_terminate(id);
}

void terminateOne(int /*signal*/) {
  igh_master_request_terminate(1);
}

// A loopback slave counts: what comes back is what was sent, plus one.
void countUntilTerminated(std::uint16_t id, std::uint32_t in, std::uint32_t out, std::atomic<int>& count) {
  while (!terminateRequested(id)) {
    igh_master_exchange(id, nullptr, nullptr);
    double value = 0;
    igh_master_pdo_recv(id, in, &value);
    igh_master_pdo_send(id, out, value < 200 ? value + 1 : 0);
    count.fetch_add(value > 0 ? 1 : 0, std::memory_order_relaxed);
  }
}

void awaitCount(const std::atomic<int>& count, int more) {
  const int wanted = count.load(std::memory_order_relaxed) + more;
  while (count.load(std::memory_order_relaxed) < wanted) {
    std::this_thread::yield();
  }
}

} // namespace

TEST_F(Scenario, MastersLiveInThreadsOfTheirOwnAndAreTerminatedFromAnywhere) {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {7, 0}}};
  build({device});
  build({device}, {1});
  testing::internal::CaptureStdout();
  std::atomic<int> counts[2] = {};
  const auto live = [&](std::uint16_t id) { // set up while the other master cycles
    EXPECT_TRUE(igh_master_scan(id, nullptr) && igh_master_config_all_slave(id));
    std::uint32_t request = 0;
    EXPECT_TRUE(igh_master_create_sdo_request(id, 0, 0x2000, 1, DATA_TYPE_UINT, 0, true, &request));
    EXPECT_TRUE(igh_master_active(id));
    bool done = false;
    double read = 0;
    EXPECT_TRUE(igh_master_sdo_recv(id, request, &read, &done));
    for (int left = 3000; left > 0 && !done; --left) {
      igh_master_exchange(id, nullptr, nullptr);
    }
    EXPECT_EQ(read, 7);
    const std::uint32_t in = handle(0, "In", true, id);
    countUntilTerminated(id, in, handle(0, "Out", false, id), counts[id]);
  };
  std::thread first(live, static_cast<std::uint16_t>(0));
  awaitCount(counts[0], 10);
  std::thread second(live, static_cast<std::uint16_t>(1));
  awaitCount(counts[1], 100);
  awaitCount(counts[0], 100);
  igh_master_request_terminate(0);
  first.join();
  EXPECT_FALSE(terminateRequested(1));
  std::signal(SIGUSR1, terminateOne);
  pthread_kill(second.native_handle(), SIGUSR1); // in the middle of a cycle
  second.join();
  std::signal(SIGUSR1, SIG_DFL);
  igh_master_exchange(1, nullptr, nullptr);
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::EndsWith("the driver is request terminate.\n"));
}

TEST_F(Scenario, TransfersArmedAndRegistersReadBesideTheExchangesAllArrive) {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {0, 0}}};
  build({device, byteIo});
  testing::internal::CaptureStdout();
  EXPECT_TRUE(igh_master_scan(0, nullptr) && igh_master_config_all_slave(0));
  std::uint32_t request = 0;
  for (const bool read : {true, false}) {
    EXPECT_TRUE(igh_master_create_sdo_request(0, 0, 0x2000, 1, DATA_TYPE_UINT, 0, read, &request));
  }
  EXPECT_TRUE(igh_master_active(0));
  cycleUntil(8);
  const std::uint32_t in = handle(0, "In", true);
  const std::uint32_t out = handle(0, "Out", false);
  std::atomic<int> count{0};
  std::thread cycle([&] { countUntilTerminated(0, in, out, count); });
  bool done = false;
  double read = 0;
  const auto awaitDone = [&] {
    const int last = count.load(std::memory_order_relaxed) + 100000;
    while (!__atomic_load_n(&done, __ATOMIC_ACQUIRE) && count.load(std::memory_order_relaxed) < last) {
      std::this_thread::yield();
    }
    return __atomic_load_n(&done, __ATOMIC_ACQUIRE);
  };
  for (int i = 1; i <= 100 && !HasFailure(); ++i) {
    EXPECT_TRUE(igh_master_sdo_send(0, request, i, &done) && awaitDone()) << i;
    EXPECT_TRUE(igh_master_sdo_recv(0, request, &read, &done)) << i;
    igh_master_process_sdo_immediately(0, request);
    std::uint8_t status[2] = {};
    EXPECT_TRUE(igh_master_read_esc_reg(0, 1, 0x0130, status, sizeof status));
    EXPECT_EQ(status[0], 8);
    EXPECT_TRUE(igh_master_clear_all_esc_error_regs(0));
    EXPECT_TRUE(awaitDone()) << i;
    EXPECT_EQ(read, i);
  }
  EXPECT_TRUE(igh_master_request_esc_state(0, 1, 4));
  awaitCount(count, 10);
  igh_master_request_terminate(0);
  cycle.join();
  testing::internal::GetCapturedStdout();
}
