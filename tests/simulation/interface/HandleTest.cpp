#include "Bench.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" int __open_2(const char* path, int flags); // declared in fortified builds only

using namespace bench;

namespace {

using HandleTest = Bench;

TEST_F(HandleTest, AMasterIsHeldOnceAndOneWithoutBusDoesNotExist) {
  EXPECT_EQ(ecrt_version_magic(), 0x01050AU);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ecrt_request_master(3), nullptr);
  bus();
  request();
  EXPECT_EQ(ecrt_request_master(0), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Failed to open master 3: there is no simulated bus of this index.\n"
            "Failed to reserve master 0: Device or resource busy\n");
  // A handle in a mapping would count as locked in a process that locks its memory.
  auto* page = reinterpret_cast<std::uint8_t*>(master) - reinterpret_cast<std::uintptr_t>(master) % 4096;
  EXPECT_TRUE(::msync(page, 1, MS_ASYNC) < 0 && errno == ENOMEM);
  ecrt_release_master(master);
  EXPECT_FALSE(bus().reserved());
  EXPECT_NE(ecrt_request_master(0), nullptr);
}

TEST_F(HandleTest, AnOpenedMasterTellsOfItsSlavesBesideTheOneThatHoldsIt) {
  bus().addSlave(twoWay());
  ec_master_t* opened = ecrt_open_master(0);
  request();
  EXPECT_EQ(ecrt_master_activate(opened), -EPERM);
  EXPECT_EQ(bus().misuse().foreignHandle, 1U);
  ecrt_master_deactivate(master);
  ecrt_release_master(master);
  bus().addSlave(inputOnly()); // the idle master scans by itself
  ec_pdo_info_t pdo{};
  ec_pdo_entry_info_t entry{};
  EXPECT_EQ(ecrt_master_get_pdo(opened, 1, 3, 1, &pdo), -EINVAL);
  EXPECT_EQ(ecrt_master_get_pdo_entry(opened, 1, 3, 0, 2, &entry), -EINVAL);
  ec_sync_info_t sync{};
  EXPECT_EQ(ecrt_master_get_sync_manager(opened, 1, 3, &sync), 0);
  EXPECT_EQ(ecrt_master_get_sync_manager(opened, 1, 4, &sync), -EINVAL);
  EXPECT_EQ(ecrt_master_get_sync_manager(opened, 1, 16, &sync), -ENOENT);
  ecrt_release_master(opened);
  EXPECT_EQ(ecrt_master_get_sync_manager(opened, 0, 2, &sync), -EPERM);
  EXPECT_EQ(bus().misuse().deadHandle, 1U);
}

TEST_F(HandleTest, DeadAndForeignHandlesAreCountedAndHarmless) {
  request({twoWay()});
  ec_slave_config_t* first = ecrt_master_slave_config(master, 0, 0, VENDOR, 1);
  EXPECT_NE(first, ecrt_master_slave_config(master, 0, 0, VENDOR, 1));
  EXPECT_EQ(nullptr, ecrt_master_slave_config(master, 0, 0, VENDOR, 2));
  sim::bus(1);
  ec_master_t* other = ecrt_request_master(1);
  EXPECT_LT(ecrt_master_select_reference_clock(other, first), 0);
  EXPECT_LT(ecrt_master_activate(reinterpret_cast<ec_master_t*>(this)), 0);
  EXPECT_LT(ecrt_master_activate(reinterpret_cast<ec_master_t*>(domain)), 0);
  EXPECT_EQ(sim::bus(1).misuse().foreignHandle, 2U) << "a strange pointer is charged to the last request";
  EXPECT_EQ(bus().misuse().foreignHandle, 1U);

  ecrt_master_deactivate(master); // an inactive master loses its configuration too
  ec_slave_config_state_t state = {1, 1, 5, 1, 1, 1234};
  ecrt_slave_config_state(first, &state);
  EXPECT_EQ(state.position, 1234U);
  EXPECT_EQ(ecrt_domain_data(nullptr), nullptr);
  ecrt_release_master(master);
  ecrt_release_master(master);
  EXPECT_EQ(bus().misuse().deadHandle, 2U);
  EXPECT_EQ(sim::bus(1).misuse().deadHandle, 1U) << "the null handle";
  EXPECT_EQ(bus().misuse().lines[1], "ecrt_slave_config_state was called with a handle that has been freed.");
  sim::reset();
  bus();
  EXPECT_LT(ecrt_master_activate(other), 0);
  EXPECT_EQ(bus().misuse().deadHandle, 1U);
}

TEST_F(HandleTest, OnlyDeviceFilesOfMastersAreServed) {
  const auto openError = [](const char* path) { return ::open(path, O_RDWR) < 0 ? errno : 0; };
  EXPECT_EQ(openError("/dev/EtherCAT0"), ENOENT);
  bus().addSlave(twoWay());
  const int device = ::__open_2("/dev/EtherCAT0", O_RDWR); // as a fortified build may call it
  std::uint32_t module[2] = {};
  EXPECT_EQ(::ioctl(device, 0x8008A400UL, module), 0);
  EXPECT_THAT(module, ::testing::ElementsAre(36, 1));
  EXPECT_EQ(::ioctl(device, 0x8008A4FFUL, module), -1);
  EXPECT_EQ(errno, ENOTTY);
  bus().setResponding(0, false);
  struct {
    std::uint16_t position;
    std::uint8_t emergency;
    std::uint16_t address;
    std::uint64_t size;
    std::uint32_t* data;
  } write{0, 1, 0, 2, module};
  EXPECT_EQ(::ioctl(device, 0x4018A413UL, &write), 0) << "nobody looks after an emergency";
  bus().failNext(sim::Call::deviceOpen, -EACCES);
  EXPECT_EQ(openError("/dev/EtherCAT0"), EACCES);
  EXPECT_EQ(openError("/dev/EtherCAT00"), ENOENT);

  const std::string path = ::testing::TempDir() + "simulation_plain_file_" + std::to_string(getpid());
  const int plain = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
  ::unlink(path.c_str());
  struct stat status {};
  EXPECT_EQ(::fstat(plain, &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(::ioctl(plain, 0x8008A400UL, module), -1) << "not of a master";
  EXPECT_EQ(::close(plain), 0);
  EXPECT_EQ(bus().openDeviceFiles(), 1);
  EXPECT_EQ(::close(device), 0);
  EXPECT_EQ(bus().openDeviceFiles(), 0);
}

} // namespace
