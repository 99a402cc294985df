#include "Bench.h"

#include <fcntl.h>
#include <fstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace bench;

namespace {

using HandleTest = Bench;

TEST_F(HandleTest, AMasterIsHeldOnceAndOneWithoutBusDoesNotExist) {
  EXPECT_EQ(ecrt_version_magic(), 0x01050AU);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ecrt_request_master(3), nullptr);
  bus();
  master = ecrt_request_master(0);
  EXPECT_NE(master, nullptr);
  EXPECT_EQ(ecrt_request_master(0), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Failed to open master 3: there is no simulated bus of this index.\n"
            "Failed to reserve master 0: Device or resource busy\n");
  std::ifstream mappings(
      "/proc/self/maps"); // a mapping would count as locked in a process that locks its memory
  const auto address = reinterpret_cast<std::uintptr_t>(master);
  std::string rest;
  for (std::uintptr_t first = 0, last = 0; mappings >> std::hex >> first; std::getline(mappings, rest)) {
    mappings.ignore() >> last;
    EXPECT_TRUE(address < first || address >= last) << rest;
  }
  ecrt_release_master(master);
  EXPECT_FALSE(bus().reserved());
  EXPECT_NE(ecrt_request_master(0), nullptr);
}

TEST_F(HandleTest, DeadAndForeignHandlesAreCountedAndHarmless) {
  bus().addSlave(twoWay());
  sim::bus(1).addSlave(twoWay());
  request();
  ec_slave_config_t* first = ecrt_master_slave_config(master, 0, 0, vendor, 1);
  EXPECT_NE(first, ecrt_master_slave_config(master, 0, 0, vendor, 1));
  EXPECT_EQ(nullptr, ecrt_master_slave_config(master, 0, 0, vendor, 2));
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
  EXPECT_EQ(ecrt_domain_size(domain), static_cast<std::size_t>(-1));
  EXPECT_EQ(ecrt_domain_data(nullptr), nullptr);
  ecrt_release_master(master);
  ecrt_release_master(master);
  ec_slave_info_t info{};
  EXPECT_LT(ecrt_master_get_slave(master, 0, &info), 0);
  EXPECT_EQ(bus().misuse().deadHandle, 4U);
  EXPECT_EQ(sim::bus(1).misuse().deadHandle, 1U) << "the null handle";
  EXPECT_EQ(bus().misuse().lines[1], "ecrt_slave_config_state was called with a handle that has been freed.");
  sim::reset();
  EXPECT_LT(ecrt_master_activate(other), 0);
  EXPECT_EQ(bus().misuse().total(), 0U);
  EXPECT_LT(ecrt_master_activate(other), 0);
  EXPECT_EQ(bus().misuse().deadHandle, 1U);
}

TEST_F(HandleTest, CallsAtTheWrongTimeAreCounted) {
  bus().addSlave(twoWay());
  request();
  unsigned int offset = 0;
  ecrt_master_send(master);
  EXPECT_EQ(ecrt_domain_data(domain), nullptr);
  EXPECT_EQ(bus().misuse().outOfOrder, 2U);
  EXPECT_EQ(ecrt_master_activate(master), 0);
  EXPECT_EQ(ecrt_master_activate(master), 0);
  EXPECT_EQ(add(domain, 0, 1, 0x7000, 1, &offset), 0);
  exchange(3);
  EXPECT_EQ(bus().misuse().outOfOrder, 4U);
  EXPECT_EQ(bus().misuse().lines.back(),
            "ecrt_domain_reg_pdo_entry_list was called while the master was active.");
}

TEST_F(HandleTest, ASecondActivationOfOneReservationLeavesTheImageUnmapped) {
  bus().addSlave(twoWay());
  const auto activate = [&] {
    unsigned int offset = 0;
    domain = ecrt_master_create_domain(master);
    EXPECT_EQ(add(domain, 0, 1, 0x7000, 1, &offset), 0);
    EXPECT_EQ(ecrt_master_activate(master), 0);
    return ecrt_domain_data(domain);
  };
  request();
  EXPECT_NE(activate(), nullptr);
  ecrt_master_deactivate(master);
  EXPECT_EQ(bus().alState(0), 2);
  EXPECT_EQ(activate(), nullptr);
  exchange(20);
  EXPECT_EQ(completeness(), EC_WC_COMPLETE) << "all but the image works";
  ecrt_master_deactivate(master);
  bus().setReactivationUnmapped(false);
  EXPECT_NE(activate(), nullptr);
  bus().setReactivationUnmapped(true);
  ecrt_release_master(master);
  master = ecrt_request_master(0);
  EXPECT_NE(activate(), nullptr);
}

TEST_F(HandleTest, OrderedFailuresAndTheTraceFollowTheCalls) {
  bus().addSlave(twoWay());
  bus().setTracing(true);
  bus().failNext(sim::Call::regPdoEntryList, -ENOMEM, 1);
  bus().failNext(sim::Call::regPdoEntryList, -EIO);
  bus().failNext(sim::Call::createDomain);
  request();
  EXPECT_EQ(domain, nullptr);
  domain = ecrt_master_create_domain(master);
  ecrt_master_slave_config(master, 0, 0, vendor, 1);
  unsigned int offset = 9;
  EXPECT_EQ(add(domain, 0, 1, 0x7000, 1, &offset), 0);
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 1, &offset), -ENOMEM);
  EXPECT_EQ(add(domain, 0, 1, 0x6000, 1, &offset), -EIO);
  EXPECT_EQ(offset, 0U);
  ecrt_master_send(master);
  std::vector<std::string> lines;
  for (const sim::TraceEntry& entry : bus().trace()) {
    lines.push_back(entry.text);
  }
  EXPECT_THAT(lines, ::testing::ElementsAre(
                         "ecrt_request_master(0) = master", "ecrt_master_create_domain() = NULL",
                         "ecrt_master_create_domain() = 0",
                         "ecrt_master_slave_config(0, 0, 0x00000E00, 0x00000001) = 0:0",
                         "ecrt_domain_reg_pdo_entry_list(0, [0:0 0x00000E00 0x00000001 0x7000:01]) = 0",
                         "ecrt_domain_reg_pdo_entry_list(0, [0:0 0x00000E00 0x00000001 0x6000:01]) = -12",
                         "ecrt_domain_reg_pdo_entry_list(0, [0:0 0x00000E00 0x00000001 0x6000:01]) = -5",
                         "ecrt_master_send() = 0"));
  EXPECT_EQ(bus().callCount(sim::Call::regPdoEntryList), 3U);
}

TEST_F(HandleTest, OnlyDeviceFilesOfMastersAreServed) {
  EXPECT_EQ(::open("/dev/EtherCAT0", O_RDWR), -1);
  EXPECT_EQ(errno, ENOENT);
  bus();
  const int device = ::open("/dev/EtherCAT0", O_RDWR);
  ASSERT_GE(device, 0);
  std::uint32_t module[2] = {};
  EXPECT_EQ(::ioctl(device, 0x8008A400UL, module), 0);
  EXPECT_THAT(module, ::testing::ElementsAre(36, 1));
  EXPECT_EQ(::ioctl(device, 0x8008A4FFUL, module), -1);
  EXPECT_EQ(errno, ENOTTY);
  bus().failNext(sim::Call::deviceOpen, -EACCES);
  EXPECT_EQ(::open("/dev/EtherCAT0", O_RDONLY), -1);
  EXPECT_EQ(errno, EACCES);

  const std::string path = ::testing::TempDir() + "simulation_plain_file";
  ::unlink(path.c_str());
  const int plain = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0640);
  ASSERT_GE(plain, 0);
  struct stat status {};
  EXPECT_EQ(::fstat(plain, &status), 0);
  EXPECT_EQ(
      status.st_mode & 0777U, 0640U & ~[] {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return mask;
      }());
  EXPECT_EQ(::ioctl(plain, 0x8008A400UL, module), -1);
  EXPECT_EQ(errno, ENOTTY);
  EXPECT_EQ(::close(plain), 0);
  EXPECT_EQ(::open("/dev/EtherCAT00", O_RDONLY), -1);
  EXPECT_EQ(bus().openDeviceFiles(), 1);
  EXPECT_EQ(::close(device), 0);
  EXPECT_EQ(bus().openDeviceFiles(), 0);
  EXPECT_EQ(::close(device), -1);
  EXPECT_EQ(bus().callCount(sim::Call::deviceOpen), 2U);
}

} // namespace
