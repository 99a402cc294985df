#include "SdoFixture.h"

namespace scenario {
namespace {

TEST_F(SdoTest, ArmedRequestsCompleteInCursorOrderOneStepPerCycle) {
  prepare();
  const std::uint32_t a = create(0x2000, 1, true);
  const std::uint32_t b = create(0x2000, 2, false);
  const std::uint32_t c = create(0x2000, 3, true);
  toOp();
  home();
  double first = 0;
  double third = 0;
  bool done[3] = {true, true, true};
  EXPECT_TRUE(igh_master_sdo_recv(0, c, &third, &done[2]));
  EXPECT_TRUE(igh_master_sdo_send(0, b, 515.4, &done[1]));
  EXPECT_TRUE(igh_master_sdo_recv(0, a, &first, &done[0]));
  EXPECT_FALSE(igh_master_sdo_recv(0, a, &first, &done[0])); // pending
  EXPECT_FALSE(done[0] || done[1] || done[2]);
  EXPECT_EQ(steps(4), "2w 2. 2. 2=");
  EXPECT_TRUE(done[1] && !done[2]);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 2), (Bytes{3, 2}));
  EXPECT_EQ(steps(4), "3r 3. 3. 3=");
  EXPECT_TRUE(done[2] && third == 3 && !done[0]);
  EXPECT_EQ(steps(4), "1r 1. 1. 1=");
  EXPECT_TRUE(done[0] && first == 1);
  // The position before the cursor waits for the next cycle.
  EXPECT_TRUE(igh_master_sdo_recv(0, a, &first, nullptr));
  EXPECT_EQ(steps(6), "- 1r 1. 1. 1= -");
  // A forced request goes first once the one in service is done; one can wait at a time.
  home();
  EXPECT_TRUE(igh_master_sdo_send(0, b, 1, &done[1]));
  EXPECT_TRUE(igh_master_sdo_recv(0, c, &third, &done[2]));
  EXPECT_TRUE(igh_master_sdo_recv(0, a, &first, &done[0]));
  EXPECT_EQ(steps(1), "2w");
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, 16));
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, a));
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, c));
  EXPECT_EQ(steps(7), "2. 2. 2= 1r 1. 1. 1=");
  EXPECT_TRUE(done[0] && !done[2]);
  EXPECT_EQ(steps(4), "3r 3. 3. 3=");
}

TEST_F(SdoTest, AFailingRequestIsRetriedWhileOthersWaitAndTheCycleStaysHealthy) {
  prepare();
  create(0x2000, 1, true);
  const std::uint32_t bad = create(0x2000, 2, true);
  const std::uint32_t waiting = create(0x2000, 3, true);
  const std::uint32_t in = handle(0, "In", true);
  toOp();
  for (const SdoFault fault : {SdoFault::abort, SdoFault::longAnswer, SdoFault::busyForEver}) {
    home();
    bus().setSdoFault(0, 0x2000, 2, fault);
    bool done[2] = {};
    double values[2] = {-1, -1};
    EXPECT_TRUE(igh_master_sdo_recv(0, bad, &values[0], &done[0]));
    EXPECT_TRUE(igh_master_sdo_recv(0, waiting, &values[1], &done[1]));
    EXPECT_EQ(steps(7), fault == SdoFault::busyForEver ? "2r 2. 2. 2. 2. 2. 2." : "2r 2. 2. 2! 2. 2. 2!");
    bus().setInputs(0, {static_cast<std::uint8_t>(fault)});
    errors.clear();
    cycle(300);
    EXPECT_TRUE(!done[0] && !done[1] && values[0] == -1);
    EXPECT_EQ(errors, "");
    EXPECT_EQ(value(in), static_cast<double>(fault));
    bus().setSdoFault(0, 0x2000, 2, SdoFault::none);
    cycle(12);
    EXPECT_TRUE(done[0] && done[1] && values[0] == 2 && values[1] == 3);
  }
}

TEST_F(SdoTest, TypesArraysCompleteAccessAndRawBytesDeliverWhatTheyShould) {
  prepare();
  create(0x2000, 1, true);
  const std::uint32_t pair = create(0x4000, 0, true, DATA_TYPE_INT, 2);
  EXPECT_EQ(create(0x4000, 0, false, DATA_TYPE_USINT), pair); // shared; type and size stay
  const std::uint32_t lint = create(0x2000, 3, true, DATA_TYPE_LINT);
  std::uint32_t whole = 0, part = 0;
  EXPECT_TRUE(igh_master_create_raw_sdo_request_complete(0, 0, 0x3000, 6, 500, true, &whole));
  EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x3000, 0, 1, 500, true, &part));
  EXPECT_NE(whole, part);
  toOp();
  home();
  double values[2] = {};
  bool done[3] = {};
  Bytes object(6);
  Bytes count(1);
  EXPECT_TRUE(igh_master_sdo_recv_ex(0, pair, values, 2, &done[0]));
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, whole, object.data(), 6, &done[1]));
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, part, count.data(), 1, &done[2]));
  cycle(12);
  EXPECT_TRUE(done[0] && done[1] && done[2]);
  EXPECT_TRUE(values[0] == -2 && values[1] == 5);
  EXPECT_EQ(object, (Bytes{2, 0, 0x11, 0x22, 0x33, 0x44}));
  EXPECT_EQ(count, Bytes{2});

  values[0] = 1.5;
  EXPECT_TRUE(igh_master_sdo_send_ex(0, pair, values, 2, &done[0]));
  cycle(6);
  EXPECT_TRUE(done[0]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0)[0], 2);
  Bytes untouched(4, 0x77);
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, pair, untouched.data(), 4, &done[0]));
  cycle(8);
  EXPECT_TRUE(done[0]);
  EXPECT_EQ(untouched, Bytes(4, 0x77)); // a typed request read raw
  EXPECT_TRUE(igh_master_sdo_recv(0, lint, values, &done[0]));
  cycle(8);
  EXPECT_TRUE(done[0] && values[0] == 0); // no conversion
}

TEST_F(SdoTest, RefusalsSayWhy) {
  const std::string size = "Unexpected Sdo size.\n";
  build({drive});
  capture([] { igh_master_scan(0, nullptr); });
  std::uint32_t id = 7;
  const auto typed = [&](std::uint32_t slave, int type, std::uint32_t count) {
    return capture([&] {
             EXPECT_FALSE(igh_master_create_sdo_request_ex(
                 0, slave, 0x2000, 1, static_cast<ETHERCAT_DATA_TYPE>(type), count, 0, true, &id));
           })
        .err;
  };
  EXPECT_EQ(typed(0, DATA_TYPE_UDINT, 0x40000001), size); // its bytes would wrap to 4
  EXPECT_EQ(typed(0, DATA_TYPE_UINT, 0) + typed(0, 11, 1) + typed(0, -1, 1), size + size + size);
  EXPECT_EQ(typed(255, DATA_TYPE_UINT, 0) + typed(1, DATA_TYPE_UINT, 1), "");
  EXPECT_EQ(id, 7U);
  EXPECT_EQ(capture([&] { igh_master_create_raw_sdo_request_complete(0, 0, 0x3000, 0, 0, true, &id); }).err,
            "Unexpected sdo size.\n");
  // A slave that was not configured has no request.
  EXPECT_EQ(typed(0, DATA_TYPE_UINT, 1), "Failed to create SDO request.\n");
  EXPECT_EQ(id, 0xFFFFFFFFU);
  EXPECT_EQ(typed(0, DATA_TYPE_ULINT, 0x1FFFFFFF),
            "Failed to create SDO request.\n"); // before any memory is taken
  EXPECT_EQ(capture([&] { igh_master_create_raw_sdo_request_complete(0, 0, 0x3000, 6, 0, true, &id); }).err,
            "Failed to create complete SDO request.\n");
  igh_master_config_all_slave(0);
  // After a failed creation the next one tries again, and no two keys share an object.
  bus().failNext(Call::createSdoRequest);
  typed(0, DATA_TYPE_UINT, 1);
  const std::uint32_t other = create(0x2000, 2, false);
  const std::uint32_t retried = create(0x2000, 1, true);
  EXPECT_NE(other, retried);

  toOp();
  double value = 0;
  bool done = true;
  const auto said = [](const std::function<bool()>& call) {
    return capture([&] { EXPECT_FALSE(call()); }).out;
  };
  EXPECT_EQ(said([&] { return igh_master_sdo_recv(0, other, &value, &done); }),
            "SDO don't create with readable flag\n");
  EXPECT_FALSE(done);
  EXPECT_EQ(said([&] { return igh_master_sdo_send(0, retried, 1, &done); }),
            "SDO don't create with writable flag\n");
  EXPECT_EQ(said([&] { return igh_master_sdo_recv_ex(0, retried, &value, 0x80000001U, &done); }),
            "SDO do not match field size\n");
  EXPECT_EQ(said([&] { return igh_master_sdo_recv(0, 16, &value, &done); }), "");

  // A scan forgets requests and keys.
  capture([] {
    igh_master_scan(0, nullptr);
    igh_master_config_all_slave(0);
  });
  EXPECT_EQ(said([&] { return igh_master_sdo_recv(0, retried, &value, &done); }), "");
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, 0));
  outOfOrderExpected = true; // made while the master is active
  EXPECT_EQ(create(0x2000, 3, true), 0U);
}

} // namespace
} // namespace scenario
