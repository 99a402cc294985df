#include "Bench.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace bench;

namespace {

using Bytes = std::vector<std::uint8_t>;

class MailboxTest : public Bench {
protected:
  void start() {
    sim::Slave slave = twoWay();
    slave.objects = {{0x2000, 1, {1, 2}}, {0x2000, 2, {3, 4}, true}};
    request({slave, twoWay()});
    one = create(0, 1);
    two = create(0, 2);
    absent = create(7, 1);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    exchange(20);
  }
  ec_sdo_request_t* create(std::uint16_t position, std::uint8_t subindex) {
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, position, vendor, 1);
    return ecrt_slave_config_create_sdo_request(configuration, 0x2000, subindex, 2);
  }
  ec_request_state_t after(ec_sdo_request_t* request, unsigned int cycles) {
    exchange(cycles);
    return ecrt_sdo_request_state(request);
  }

  ec_sdo_request_t *one = nullptr, *two = nullptr, *absent = nullptr;
};

TEST_F(MailboxTest, TheBufferFollowsTheRealRules) {
  start();
  std::uint8_t* data = ecrt_sdo_request_data(one);
  EXPECT_NE(data[0] + data[1], 0) << "not initialised";
  EXPECT_EQ(ecrt_sdo_request_state(one), EC_REQUEST_UNUSED);
  bus().setSdoFault(0, 0x2000, 1, sim::SdoFault::shortAnswer);
  ecrt_sdo_request_read(two); // the older one goes first all the same
  ecrt_sdo_request_read(one);
  EXPECT_EQ(after(one, 2), EC_REQUEST_BUSY);
  EXPECT_EQ(after(one, 1), EC_REQUEST_SUCCESS);
  EXPECT_EQ(ecrt_sdo_request_data_size(one), 1U);
  EXPECT_EQ(after(two, 2), EC_REQUEST_BUSY);
  EXPECT_EQ(after(two, 1), EC_REQUEST_SUCCESS);
  data[0] = 9;
  EXPECT_EQ(ecrt_sdo_request_state(one), EC_REQUEST_SUCCESS);
  EXPECT_EQ(data[0], 1) << "copied anew by each look";
  data[0] = 9;
  ecrt_sdo_request_write(one); // with the size of the short read
  EXPECT_EQ(after(one, 4), EC_REQUEST_ERROR) << "the object has two bytes";
  bus().setObjectValue(0, 0x2000, 1, {5});
  data[0] = 9;
  ecrt_sdo_request_write(one);
  EXPECT_EQ(after(one, 4), EC_REQUEST_SUCCESS);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 1), Bytes{9});
  ecrt_sdo_request_write(two);
  EXPECT_EQ(after(two, 4), EC_REQUEST_ERROR) << "read-only";
  ecrt_sdo_request_read(absent);
  EXPECT_EQ(after(absent, 2), EC_REQUEST_ERROR) << "no such slave";
  EXPECT_EQ(bus().misuse().total(), 0U);
}

TEST_F(MailboxTest, StartingABusyRequestIsMisuseAndAWaitBeyondTheTimeOutEndsInError) {
  start();
  ecrt_sdo_request_read(two);
  exchange(2);
  ecrt_sdo_request_read(two);
  EXPECT_EQ(after(two, 2), EC_REQUEST_BUSY);
  EXPECT_EQ(after(two, 1), EC_REQUEST_SUCCESS);
  EXPECT_EQ(bus().misuse().outOfOrder, 1U);
  bus().setSdoFault(0, 0x2000, 1, sim::SdoFault::timeOut);
  ecrt_sdo_request_timeout(two, 20);
  ecrt_sdo_request_read(one);
  ecrt_sdo_request_read(two);
  EXPECT_EQ(after(one, 29), EC_REQUEST_BUSY);
  EXPECT_EQ(after(one, 2), EC_REQUEST_ERROR);
  EXPECT_EQ(after(two, 1), EC_REQUEST_ERROR);
  ecrt_master_deactivate(master);
  EXPECT_EQ(ecrt_sdo_request_state(two), EC_REQUEST_ERROR);
  EXPECT_EQ(bus().misuse().deadHandle, 1U);
  ecrt_sdo_request_read(create(0, 1));
  ecrt_release_master(master);
  EXPECT_EQ(bus().misuse().lines.back(), "ecrt_release_master was called while a request was busy.");
}

struct Record {
  std::uint16_t position;
  std::uint8_t emergency;
  std::uint16_t address;
  std::uint64_t size;
  std::uint8_t* data;
};

TEST_F(MailboxTest, TheDeviceFileServesRegistersWithTheErrorsOfTheRealOne) {
  start();
  const int device = ::open("/dev/EtherCAT0", O_RDWR);
  const int readOnly = ::open("/dev/EtherCAT0", O_RDONLY);
  const auto call = [](int file, unsigned long code, Record record) {
    return ::ioctl(file, code, &record) == 0 ? 0 : errno;
  };
  constexpr unsigned long read = 0xC018A412, write = 0x4018A413, both = 0xC018A45D;
  std::uint8_t bytes[2] = {7, 8};
  EXPECT_EQ(call(device, write, {0, 0, 0x0F80, 2, bytes}), 0);
  bytes[0] = 9;
  EXPECT_EQ(call(device, both, {0, 0, 0x0F80, 2, bytes}), 0);
  EXPECT_THAT(bytes, ::testing::ElementsAre(7, 8));
  EXPECT_EQ(call(readOnly, read, {0, 0, 0x0F80, 2, bytes}), 0);
  EXPECT_THAT(bytes, ::testing::ElementsAre(9, 8));
  EXPECT_EQ(call(readOnly, write, {0, 0, 0x0F80, 2, bytes}), EPERM);
  EXPECT_EQ(call(device, read, {9, 0, 0, 2, bytes}), EINVAL);
  EXPECT_EQ(call(device, read, {9, 0, 0, 0, nullptr}), 0);
  EXPECT_EQ(call(device, read, {0, 0, 0, 2, nullptr}), EFAULT);
  EXPECT_EQ(call(device, read, {0, 0, 0xFFFF, 2, bytes}), EIO);
  bus().setResponding(1, false);
  EXPECT_EQ(call(device, read, {1, 0, 0, 2, bytes}), EIO);
  EXPECT_EQ(call(device, write, {1, 1, 0, 2, bytes}), 0) << "an emergency is not looked after";
  ::close(device);
  ::close(readOnly);
}

} // namespace
