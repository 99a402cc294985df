#include "Bench.h"

using namespace bench;

namespace {

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
    ec_slave_config_t* configuration = ecrt_master_slave_config(master, 0, position, VENDOR, 1);
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
  EXPECT_EQ(bus().objectValue(0, 0x2000, 1), std::vector<std::uint8_t>{9});
  ecrt_sdo_request_write(two);
  EXPECT_EQ(after(two, 4), EC_REQUEST_ERROR) << "read-only";
  bus().setSdoFault(0, 0x2000, 2, sim::SdoFault::longAnswer);
  ecrt_sdo_request_read(two);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(after(two, 4), EC_REQUEST_ERROR);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Received 3 bytes do not fit info SDO data memory (2 bytes)!\n");
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
  bus().setSdoFault(0, 0x2000, 1, sim::SdoFault::timeOut);
  ecrt_sdo_request_timeout(two, 20);
  ecrt_sdo_request_read(one);
  ecrt_sdo_request_read(two);
  EXPECT_EQ(after(one, 29), EC_REQUEST_BUSY);
  EXPECT_EQ(after(one, 2), EC_REQUEST_ERROR);
  EXPECT_EQ(after(two, 1), EC_REQUEST_ERROR);
  EXPECT_EQ(ecrt_master_activate(master), 0);
  ecrt_sdo_request_read(one);
  ecrt_release_master(master);
  EXPECT_THAT(bus().misuse().lines,
              ::testing::ElementsAre("ecrt_sdo_request_read was called while the request was busy.",
                                     "ecrt_master_activate was called while the master was active.",
                                     "ecrt_release_master was called while a request was busy."));
}

} // namespace
