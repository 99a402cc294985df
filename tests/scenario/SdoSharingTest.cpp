// SDO requests whose users, directions and activations come and go.
#include "SdoFixture.h"

using namespace scenario;

TEST_F(SdoTest, TheLastUserOfADirectionTakesItsTransferAway) {
  for (const SdoFault fault : {SdoFault::none, SdoFault::abort}) {
    prepare();
    const std::uint32_t id = create(0x2000, 1, true);
    create(0x2000, 1, false);
    toOp();
    home();
    bus().setSdoFault(0, 0x2000, 1, fault);
    EXPECT_TRUE(read(id));
    EXPECT_EQ(steps(3), "- 1r 1.");
    igh_master_destroy_sdo_request(0, id, true);
    EXPECT_TRUE(write(id, 0x0809, 1));
    cycle(2); // the end of the withdrawn read, or its failure, is not the write's
    bus().setSdoFault(0, 0x2000, 1, SdoFault::none);
    for (int left = 20; left > 0 && !done[1]; --left) {
      cycle();
    }
    EXPECT_EQ(bus().objectValue(0, 0x2000, 1), (Bytes{9, 8}));
    EXPECT_TRUE(done[1] && !done[0] && values[0] == -1);
    igh_master_destroy_sdo_request(0, id, false);
    EXPECT_FALSE(write(id, 1, 1));
    startOver();
  }
}

// It leaves the read alone, which is not started anew.
TEST_F(SdoTest, TheLastWriterTakesTheArmedWriteWithIt) {
  prepare();
  const std::uint32_t id = createBothWays();
  toOp();
  const Bytes sent{1, 2, 3, 4};
  Bytes received(4);
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, id, received.data(), 4, &done[0]));
  EXPECT_EQ(steps(2), "0r 0.");
  EXPECT_TRUE(igh_master_raw_sdo_send(0, id, sent.data(), 4, &done[1]));
  igh_master_destroy_sdo_request(0, id, false);
  EXPECT_EQ(steps(2), "0. 0=");
  EXPECT_TRUE(done[0] && received == (Bytes{0xFE, 0xFF, 5, 0}) && !done[1]);
}

TEST_F(SdoTest, BehindAShortAnswerStandZerosAndNoWriteIsCut) {
  prepare();
  const std::uint32_t other = create(0x2000, 1, true);
  const std::uint32_t raw = createBothWays();
  const std::uint32_t typed = create(0x3000, 1, true, DATA_TYPE_INT, 2);
  toOp();
  home();
  Bytes received(4, 0x77);
  const auto readAll = [&](const Bytes& answer) {
    bus().setObjectValue(0, 0x4000, 0, answer);
    bus().setObjectValue(0, 0x3000, 1, answer);
    EXPECT_TRUE(igh_master_raw_sdo_recv(0, raw, received.data(), 4, &done[0]));
    EXPECT_TRUE(igh_master_sdo_recv_ex(0, typed, &values[0], 2, &done[1]));
    EXPECT_TRUE(read(other, 2));
    cycle(16);
    EXPECT_TRUE(done[0] && done[1] && done[2]) << "nobody is held up";
  };
  const Bytes sent{1, 2, 3, 4};
  const auto arm = [&] { return igh_master_raw_sdo_send(0, raw, sent.data(), 4, &done[3]); };
  EXPECT_TRUE(arm()); // and then the answer leaves it too little room
  readAll({0xFE, 0xFF, 5});
  EXPECT_EQ(received, (Bytes{0xFE, 0xFF, 5, 0}));
  EXPECT_TRUE(values[0] == -2 && values[1] == 5 && !done[3]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0).size(), 3U);
  readAll({9, 9, 9, 9});
  EXPECT_TRUE(done[3]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0), sent);
  readAll({7});
  EXPECT_EQ(received, (Bytes{7, 0, 0, 0}));
  EXPECT_TRUE(values[0] == 7 && values[1] == 0);
  expectPrint("SDO do not match field size\n", "", [&] { EXPECT_FALSE(arm()); });
  bus().setReactivationUnmapped(false);
  toOp();
  EXPECT_TRUE(arm());
}

TEST_F(SdoTest, AScanTakesRequestsKeysCursorAndForcedRequestBack) {
  prepare();
  for (std::uint8_t subindex = 1; subindex < 21; ++subindex) {
    create(0x5000, subindex, true);
  }
  toOp();
  EXPECT_TRUE(read(19));
  cycle(10); // the cursor stands far behind what the next table has
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, 18));
  configure();
  EXPECT_FALSE(read(19));
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, 0));
  outOfOrderExpected = 1; // made while the master is active
  EXPECT_EQ(create(0x2000, 3, true), 0U);
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, 0));
  toOp();
  EXPECT_TRUE(read(0));
  cycle(10);
  EXPECT_TRUE(done[0] && values[0] == 3);
}

TEST_F(SdoTest, ActivatingAgainRenewsRequestsAndStartsPendingTransfersOver) {
  prepare();
  create(0x2000, 1, true);
  const std::uint32_t writer = create(0x2000, 2, false);
  const std::uint32_t whole = createWhole();
  toOp();
  home();
  Bytes object(6);
  EXPECT_TRUE(write(writer, 7, 0));
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, whole, object.data(), 6, &done[1]));
  EXPECT_EQ(steps(2), "2w 2.");
  bus().setReactivationUnmapped(false);
  bus().setTracing(true);
  toOp();
  EXPECT_THAT(callTexts(Call::sdoTimeout),
              testing::StartsWith("ecrt_sdo_request_timeout(0:0 0x2000:01, 500)"));
  EXPECT_LT(calls().find("create_sdo_request_complete"), calls().find("master_activate"));
  cycle(12);
  EXPECT_TRUE(done[0] && done[1]);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 2), (Bytes{7, 0}));
  EXPECT_EQ(object, (Bytes{2, 0, 0x11, 0x22, 0x33, 0x44}));
}
