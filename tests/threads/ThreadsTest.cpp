#include "scenario/Fixture.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ecrt.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

using namespace scenario;

namespace {

bool terminateRequested(std::uint16_t id) {
  return igh_master_is_request_terminate(id);
}

void terminateOne(int /*signal*/) {
  igh_master_request_terminate(1);
}

// A loopback slave counts: what comes back is what was sent, plus one. Never back to 0: where a slave has
// left OP, the last value stays.
void countUntilTerminated(std::uint16_t id, std::uint32_t in, std::uint32_t out, std::atomic<int>& count) {
  while (!terminateRequested(id)) {
    igh_master_exchange(id, nullptr, nullptr);
    double value = 0;
    igh_master_pdo_recv(id, in, &value);
    igh_master_pdo_send(id, out, value < 200 ? value + 1 : 1);
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

TEST_F(Scenario, AnOpenedMasterTheDeviceFileAndFaultsWorkBesideTheExchanges) {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {0}}};
  startInOp({device, byteIo});
  bus().setTiming(ethercat_simulation::Timing::real); // calls wait for the bus
  const std::uint32_t in = handle(0, "In", true);
  const std::uint32_t out = handle(0, "Out", false);
  std::atomic<int> count{0};
  std::thread cycle([&] { countUntilTerminated(0, in, out, count); });
  ec_master_t* opened = ecrt_open_master(0);
  const int file = open("/dev/EtherCAT0", O_RDONLY);
  struct {
    std::uint16_t position;
    std::uint8_t emergency;
    std::uint16_t address;
    std::uint64_t size;
    std::uint8_t* data;
  } access{};
  for (std::uint8_t i = 1; i <= 10 && !HasFailure(); ++i) {
    ec_slave_info_t info{};
    EXPECT_EQ(ecrt_master_get_slave(opened, 1, &info), 0);
    EXPECT_EQ(info.al_state, 8);
    std::uint32_t abort = 0;
    std::size_t size = 0;
    std::uint8_t read = 0;
    EXPECT_EQ(ecrt_master_sdo_download(opened, 0, 0x2000, 1, &i, 1, &abort), 0);
    EXPECT_EQ(ecrt_master_sdo_upload(opened, 0, 0x2000, 1, &read, 1, &size, &abort), 0);
    EXPECT_EQ(read, i);
    awaitCount(count, 2); // so that these orders do not lie close behind a call
    bus().addErrorCount(1, 0x0300, 1);
    bus().dropFrames(1);
    bus().setInputs(1, {i});
    access = {1, 0, 0x0300, 1, &read};
    EXPECT_EQ(ioctl(file, 0xC018A412UL, &access), 0);
    EXPECT_GE(read, i);
    EXPECT_EQ(bus().alState(1), 8);
  }
  testing::internal::CaptureStdout();
  igh_master_request_terminate(0);
  cycle.join();
  igh_master_exchange(0, nullptr, nullptr);
  testing::internal::GetCapturedStdout();
  close(file);
  ecrt_release_master(opened);
}

TEST(Waiting, CallsNeitherHoldOthersUpNorTouchWhatWentMeanwhile) {
  namespace sim = ethercat_simulation;
  for (const bool whole : {true, false}) {
    int result = 0;
    for (int left = 200; left > 0 && result == 0; --left) { // until the end comes in the middle
      sim::reset();
      bus().setTiming(sim::Timing::real);
      sim::Slave slave;
      slave.objects = {{0x2000, 1, {0}}};
      bus().addSlave(slave);
      ec_master_t* opened = ecrt_open_master(0);
      const auto upload = [&] {
        std::uint32_t abort = 0;
        std::size_t size = 0;
        std::uint8_t read = 0;
        return ecrt_master_sdo_upload(opened, 0, 0x2000, 1, &read, 1, &size, &abort);
      };
      ASSERT_EQ(upload(), 0);
      std::thread reader([&] { result = upload(); });
      while (bus().callCount(Call::sdoUpload) == 1) {
        std::this_thread::yield();
      }
      whole ? sim::reset() : bus().removeSlave(0);
      reader.join();
    }
    EXPECT_EQ(result, -EIO) << whole;
  }
  sim::reset();
}
