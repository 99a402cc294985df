#include "Fixture.h"

namespace scenario {
namespace {

using ethercat_simulation::SdoFault;

const Device drive = [] {
  Device device = byteIo;
  device.objects = {{0x2000, 1, {1, 0}},
                    {0x2000, 2, {2, 0}},
                    {0x2000, 3, {3, 0}},
                    {0x3000, 0, {2}},
                    {0x3000, 1, {0x11, 0x22}},
                    {0x3000, 2, {0x33, 0x44}},
                    {0x4000, 0, {0xFE, 0xFF, 5, 0}}};
  return device;
}();

class SdoTest : public Scenario {
protected:
  // Between configuration and activation.
  void prepare() {
    build({drive});
    capture([] {
      igh_master_scan(0, nullptr);
      igh_master_config_all_slave(0);
    });
  }
  static std::uint32_t create(std::uint16_t index, std::uint8_t subindex, bool read,
                              ETHERCAT_DATA_TYPE type = DATA_TYPE_UINT, std::uint32_t count = 1) {
    std::uint32_t id = 0xEEEE;
    EXPECT_TRUE(igh_master_create_sdo_request_ex(0, 0, index, subindex, type, count, 500, read, &id));
    return id;
  }
  void toOp() {
    capture([this] {
      EXPECT_TRUE(igh_master_active(0));
      cycleUntil(8);
    });
  }
  // What happened to which subindex in each cycle: r or w for issued, . for busy, = for done, ! for failed
  // and issued again; - for nothing.
  std::string steps(unsigned int cycles) {
    std::string text;
    bus().setTracing(true);
    while (cycles-- > 0) {
      bus().clearTrace();
      cycle();
      char issued = 0;
      std::string step = "-";
      for (const ethercat_simulation::TraceEntry& entry : bus().trace()) {
        if (entry.call == Call::sdoState) {
          step = std::string(1, entry.text[entry.text.find(')') - 1]) + "=.=!"[entry.text.back() - '0'];
        }
        issued = entry.call == Call::sdoRead ? 'r' : entry.call == Call::sdoWrite ? 'w' : issued;
      }
      if (issued != 0 && step.back() == '=') {
        step.back() = issued;
      }
      text += (text.empty() ? "" : " ") + step;
    }
    bus().setTracing(false);
    return text;
  }
  // A read of request 0 leaves the cursor behind its read phase.
  void home() {
    bool done = false;
    double value = 0;
    EXPECT_TRUE(igh_master_sdo_recv(0, 0, &value, &done));
    while (!done) {
      cycle();
    }
  }
};

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
