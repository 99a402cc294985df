// SDO requests whose users, directions and activations come and go.
#include "SdoFixture.h"

namespace scenario {
namespace {

TEST_F(SdoTest, TheLastUserOfADirectionTakesItsTransferAway) {
  prepare();
  const std::uint32_t id = create(0x2000, 1, true);
  create(0x2000, 1, true);
  create(0x2000, 1, false);
  toOp();
  home();
  double value = -1;
  bool readDone = false;
  bool writeDone = false;
  EXPECT_TRUE(igh_master_sdo_recv(0, id, &value, &readDone));
  EXPECT_EQ(steps(3), "- 1r 1.");
  igh_master_destroy_sdo_request(0, id, true);
  EXPECT_EQ(steps(1), "1."); // one reader left
  igh_master_destroy_sdo_request(0, id, true);
  EXPECT_TRUE(igh_master_sdo_send(0, id, 0x0809, &writeDone));
  std::string seen;
  for (int left = 20; left > 0 && !writeDone; --left) {
    EXPECT_EQ(bus().objectValue(0, 0x2000, 1), (Bytes{1, 0}));
    seen += steps(1) + " ";
  }
  EXPECT_EQ(bus().objectValue(0, 0x2000, 1), (Bytes{9, 8}));
  EXPECT_THAT(seen, testing::EndsWith("1w 1. 1. 1= ")); // the end of the withdrawn read was not the write's
  EXPECT_TRUE(!readDone && value == -1);
  igh_master_destroy_sdo_request(0, id, false);
  EXPECT_FALSE(igh_master_sdo_send(0, id, 1, &writeDone));
}

TEST_F(SdoTest, TheDirectionsOfARequestDoNotTouchEachOther) {
  prepare();
  std::uint32_t id = 0;
  for (const bool read : {true, false}) {
    EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x4000, 0, 4, 0, read, &id));
  }
  const std::uint32_t lint = create(0x2000, 3, false, DATA_TYPE_LINT);
  toOp();
  const Bytes sent{1, 2, 3, 4};
  Bytes received(4);
  bool readDone = true;
  bool writeDone = true;
  EXPECT_FALSE(igh_master_raw_sdo_send(0, id, nullptr, 4, &writeDone));
  writeDone = true;
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(igh_master_sdo_send(0, lint, 1, &writeDone))
        << "nothing is armed by a type without conversion";
  }
  writeDone = true;
  EXPECT_TRUE(igh_master_raw_sdo_send(0, id, sent.data(), 4, &writeDone));
  EXPECT_FALSE(writeDone);
  EXPECT_FALSE(igh_master_raw_sdo_send(0, id, sent.data(), 4, &writeDone)) << "one is pending";
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, id, received.data(), 4, &readDone));
  cycle(20);
  EXPECT_TRUE(readDone && writeDone);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), sent);

  // The last writer takes the armed write with it, and leaves the read alone, which is not started anew. A
  // read that is withdrawn while it fails leaves nothing of the platform's buffer to the next write.
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, id, received.data(), 4, &readDone));
  EXPECT_EQ(steps(2), "0r 0.");
  EXPECT_TRUE(igh_master_raw_sdo_send(0, id, sent.data(), 4, &writeDone));
  igh_master_destroy_sdo_request(0, id, false);
  EXPECT_EQ(steps(2), "0. 0=");
  EXPECT_TRUE(readDone && received == sent && !writeDone);
  EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x4000, 0, 4, 0, false, &id));
  bus().setSdoFault(0, 0x4000, 0, SdoFault::abort);
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, id, received.data(), 4, &readDone));
  cycle(8);
  igh_master_destroy_sdo_request(0, id, true);
  bus().setSdoFault(0, 0x4000, 0, SdoFault::none);
  const Bytes next{5, 6, 7, 8};
  EXPECT_TRUE(igh_master_raw_sdo_send(0, id, next.data(), 4, &writeDone));
  for (int left = 20; left > 0 && bus().objectValue(0, 0x4000, 0) == sent; --left) {
    cycle();
  }
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), next);
  cycle(10);
  EXPECT_TRUE(writeDone);
}

TEST_F(SdoTest, BehindAShortAnswerStandZerosAndNoWriteIsCut) {
  prepare();
  const std::uint32_t other = create(0x2000, 1, true);
  std::uint32_t raw = 0;
  for (const bool read : {true, false}) {
    EXPECT_TRUE(igh_master_create_raw_sdo_request(0, 0, 0x4000, 0, 4, 0, read, &raw));
  }
  const std::uint32_t typed = create(0x3000, 1, true, DATA_TYPE_INT, 2);
  toOp();
  home();
  Bytes received(4, 0x77);
  double values[3] = {};
  bool done[4] = {};
  const auto readAll = [&](const Bytes& answer) {
    bus().setObjectValue(0, 0x4000, 0, answer);
    bus().setObjectValue(0, 0x3000, 1, answer);
    EXPECT_TRUE(igh_master_raw_sdo_recv(0, raw, received.data(), 4, &done[0]));
    EXPECT_TRUE(igh_master_sdo_recv_ex(0, typed, values, 2, &done[1]));
    EXPECT_TRUE(igh_master_sdo_recv(0, other, &values[2], &done[2]));
    cycle(16);
    EXPECT_TRUE(done[0] && done[1] && done[2]) << "nobody is held up";
  };
  const Bytes sent{1, 2, 3, 4};
  const auto arm = [&] { return igh_master_raw_sdo_send(0, raw, sent.data(), 4, &done[3]); };
  EXPECT_TRUE(arm()); // and then the answer leaves it too little room
  readAll({0xFE, 0xFF, 5});
  EXPECT_EQ(received, (Bytes{0xFE, 0xFF, 5, 0}));
  EXPECT_TRUE(values[0] == -2 && values[1] == 5);
  EXPECT_FALSE(done[3]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0).size(), 3U);
  readAll({9, 9, 9, 9});
  EXPECT_TRUE(done[3]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), sent);
  readAll({7});
  EXPECT_EQ(received, (Bytes{7, 0, 0, 0}));
  EXPECT_TRUE(values[0] == 7 && values[1] == 0);
  EXPECT_EQ(capture([&] { EXPECT_FALSE(arm()); }).out, "SDO do not match field size\n");
  bus().setReactivationUnmapped(false);
  toOp();
  EXPECT_TRUE(arm());
}

TEST_F(SdoTest, AScanTakesCursorAndForcedRequestBack) {
  prepare();
  for (std::uint8_t subindex = 1; subindex < 21; ++subindex) {
    create(0x5000, subindex, true);
  }
  toOp();
  double value = 0;
  EXPECT_TRUE(igh_master_sdo_recv(0, 19, &value, nullptr));
  cycle(10); // the cursor stands far behind what the next table has
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, 18));
  capture([] {
    igh_master_scan(0, nullptr);
    igh_master_config_all_slave(0);
  });
  outOfOrderExpected = true; // made while the master is active
  const std::uint32_t id = create(0x2000, 3, true);
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, id));
  toOp();
  bool done = false;
  EXPECT_TRUE(igh_master_sdo_recv(0, id, &value, &done));
  cycle(10);
  EXPECT_TRUE(done && value == 3);
}

TEST_F(SdoTest, ServiceBeginsInPreop) {
  prepare();
  create(0x2000, 1, true);
  const std::uint32_t b = create(0x2000, 2, true);
  double value = 0;
  bool done = false;
  bus().setClimbCycles(20);
  quietly([] { igh_master_active(0); });
  cycleUntil(1);
  EXPECT_TRUE(igh_master_sdo_recv(0, b, &value, &done));
  EXPECT_EQ(steps(1), "-") << "in INIT";
  cycleUntil(2);
  EXPECT_EQ(steps(1), "2.") << "issued in PREOP";
  cycleUntil(8);
  cycle(10);
  EXPECT_TRUE(done && value == 2);
}

TEST_F(SdoTest, ActivatingAgainRenewsRequestsAndStartsPendingTransfersOver) {
  prepare();
  create(0x2000, 1, true);
  const std::uint32_t writer = create(0x2000, 2, false);
  std::uint32_t whole = 0;
  EXPECT_TRUE(igh_master_create_raw_sdo_request_complete(0, 0, 0x3000, 6, 700, true, &whole));
  toOp();
  home();
  bool done[2] = {};
  Bytes object(6);
  EXPECT_TRUE(igh_master_sdo_send(0, writer, 7, &done[0]));
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, whole, object.data(), 6, &done[1]));
  EXPECT_EQ(steps(2), "2w 2.");
  bus().setReactivationUnmapped(false);
  bus().setTracing(true);
  toOp();
  EXPECT_THAT(callTexts(Call::createSdoRequestComplete),
              testing::StartsWith(
                  "ecrt_slave_config_create_sdo_request_complete(0:0, 0x3000, 6) = 0:0 0x3000:complete"));
  EXPECT_THAT(callTexts(Call::sdoTimeout),
              testing::StartsWith("ecrt_sdo_request_timeout(0:0 0x2000:01, 500)"));
  EXPECT_LT(calls().find("create_sdo_request_complete"), calls().find("master_activate"));
  bus().setTracing(false);
  cycle(12);
  EXPECT_TRUE(done[0] && done[1]);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 2), (Bytes{7, 0}));
  EXPECT_EQ(object, (Bytes{2, 0, 0x11, 0x22, 0x33, 0x44}));
}

} // namespace
} // namespace scenario
