#include "SdoFixture.h"
#include "SteppedClock.h"

using namespace scenario;

TEST_F(SdoTest, ArmedRequestsCompleteInCursorOrderOneStepPerCycle) {
  prepare();
  const std::uint32_t a = create(0x2000, 1, true);
  const std::uint32_t b = create(0x2000, 2, false);
  const std::uint32_t c = create(0x2000, 3, true);
  toOp();
  home();
  done[2] = true;
  EXPECT_TRUE(read(c, 2));
  EXPECT_TRUE(write(b, 515.4, 1));
  EXPECT_TRUE(read(a));
  EXPECT_FALSE(read(a)); // pending
  EXPECT_FALSE(done[0] || done[1] || done[2]);
  EXPECT_EQ(steps(4), "2w 2. 2. 2=");
  EXPECT_TRUE(done[1] && !done[2]);
  EXPECT_EQ(bus().objectValue(0, 0x2000, 2), (Bytes{3, 2}));
  EXPECT_EQ(steps(8), "3r 3. 3. 3= 1r 1. 1. 1=");
  EXPECT_TRUE(done[2] && values[2] == 3 && done[0] && values[0] == 1);
  // The position before the cursor waits for the next cycle.
  EXPECT_TRUE(igh_master_sdo_recv(0, a, &values[0], nullptr));
  EXPECT_EQ(steps(6), "- 1r 1. 1. 1= -");
  // A forced request goes first once the one in service is done; one can wait at a time.
  home();
  EXPECT_TRUE(write(b, 1, 1) && read(c, 2) && read(a));
  EXPECT_EQ(steps(1), "2w");
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, 16));
  EXPECT_TRUE(igh_master_process_sdo_immediately(0, a));
  EXPECT_FALSE(igh_master_process_sdo_immediately(0, c));
  EXPECT_EQ(steps(11), "2. 2. 2= 1r 1. 1. 1= 3r 3. 3. 3=");
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
    values[0] = -1;
    EXPECT_TRUE(read(bad) && read(waiting, 1));
    EXPECT_EQ(steps(7), fault == SdoFault::busyForEver ? "2r 2. 2. 2. 2. 2. 2." : "2r 2. 2. 2! 2. 2. 2!");
    bus().setInputs(0, {static_cast<std::uint8_t>(fault)});
    EXPECT_EQ(errorsOf(300), "");
    EXPECT_TRUE(!done[0] && !done[1] && values[0] == -1);
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
  EXPECT_EQ(create(0x2000, 3, false, DATA_TYPE_LINT), lint);
  const std::uint32_t whole = createWhole();
  const std::uint32_t part = create(0x3000, 0, true, DATA_TYPE_USINT); // of the same object
  toOp();
  home();
  Bytes object(6);
  EXPECT_TRUE(igh_master_sdo_recv_ex(0, pair, &values[0], 2, &done[0]));
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, whole, object.data(), 6, &done[1]));
  EXPECT_TRUE(read(part, 2) && read(lint, 3));
  EXPECT_FALSE(write(lint, 1, 3) || write(lint, 1, 3)) << "nothing is armed by a type without conversion";
  cycle(16);
  EXPECT_TRUE(done[0] && done[1]);
  EXPECT_THAT(values, testing::ElementsAre(-2, 5, 2, 0));
  EXPECT_EQ(object, (Bytes{2, 0, 0x11, 0x22, 0x33, 0x44}));

  values[0] = 1.5;
  EXPECT_TRUE(igh_master_sdo_send_ex(0, pair, &values[0], 2, &done[0]));
  Bytes untouched(4, 0x77);
  EXPECT_TRUE(igh_master_raw_sdo_recv(0, pair, untouched.data(), 4, &done[1]));
  cycle(12);
  EXPECT_TRUE(done[0] && done[1]);
  EXPECT_EQ(bus().objectValue(0, 0x4000, 0)[0], 2);
  EXPECT_EQ(untouched, Bytes(4, 0x77)); // a typed request read raw
}

TEST_F(SdoTest, WhatIsRefusedIsRefusedInThisOrder) {
  build({drive});
  quietly([] { igh_master_scan(0, nullptr); });
  std::uint32_t id = 7;
  const auto typed = [&](std::uint32_t slave, ETHERCAT_DATA_TYPE type, std::uint32_t count) {
    return capture([&] {
             EXPECT_FALSE(igh_master_create_sdo_request_ex(0, slave, 0x2000, 1, type, count, 0, true, &id));
           })
        .err;
  };
  EXPECT_EQ(typed(255, DATA_TYPE_UINT, 0), "");
  EXPECT_EQ(typed(1, DATA_TYPE_UINT, 0x80000001), "Unexpected Sdo size.\n"); // its bytes would wrap to 2
  EXPECT_EQ(typed(1, DATA_TYPE_UINT, 1), "");
  EXPECT_EQ(id, 7U);
  // A slave that was not configured has no request, and no memory is taken before that is known.
  EXPECT_EQ(typed(0, DATA_TYPE_ULINT, 0x1FFFFFFF), "Failed to create SDO request.\n");
  igh_master_config_all_slave(0);
  const std::uint32_t reader = create(0x2000, 1, true);
  toOp();
  done[0] = true;
  quietly([&] { EXPECT_FALSE(write(reader, 1, 0) || done[0]); });
  expectPrint("", "", [&] { EXPECT_FALSE(read(16)); });
}

TEST_F(SdoTest, EachPhaseOfACycleCostsItsOwnTime) {
  for (const int exchangeMode : {0, 1}) {
    SteppedClock clock;
    prepare(exchangeMode == 1);
    const std::uint32_t id = create(0x2000, 1, true);
    toOp();
    EXPECT_TRUE(read(id));
    cycle();
    clock.receiveTakes = 3000;
    clock.sdoStateTakes = 5000;
    clock.sendTakes = 11000;
    cycleWith([&] { clock.now += 7000; });
    const _ETHERCAT_COMM_DIAG_INFO last = lastCycle();
    EXPECT_EQ(last.txPdoReceivedCostUs, exchangeMode * 120 + 3); // with the wait for the frame
    EXPECT_EQ(last.sdoCostUs, 5);
    EXPECT_EQ(last.rxPdoSentCostUs, 11);
    EXPECT_EQ(last.userCallbackCostUs, 7);
    EXPECT_EQ(last.totalExchangeCostUs, exchangeMode * 120 + 26);
    startOver();
  }
}
