#include "Bench.h"

using namespace bench;

namespace {

class CycleTest : public Bench {
protected:
  // A two-way slave in OP: outputs at 0, inputs at 2.
  void start() {
    request({twoWay()});
    map(0);
    ASSERT_EQ(ecrt_master_activate(master), 0);
    image = ecrt_domain_data(domain);
    ASSERT_NE(image, nullptr);
    exchange(20);
    ASSERT_EQ(bus().alState(0), 8);
    receive();
  }

  std::uint8_t* image = nullptr;
};

TEST_F(CycleTest, AFrameBringsInputsAndTheEchoOfOutputsAndIsCountedSinceTheLastQueue) {
  start();
  image[0] = 0x5A;
  send();
  EXPECT_EQ(bus().outputs(0), (std::vector<std::uint8_t>{0x5A, 0}));
  image[0] = 0x77; // written while the frame is on its way
  receive();
  EXPECT_EQ(image[0], 0x5A);
  EXPECT_EQ(image[2], 0) << "the slave's mirror shows the frame before";
  send();
  receive();
  EXPECT_EQ(image[2], 0x5A);
  bus().setInputs(0, {0x11, 0x22});
  exchange(2);
  EXPECT_EQ(image[3], 0x22);

  receive();
  ecrt_domain_queue(domain);
  ecrt_domain_queue(domain);
  ecrt_domain_process(domain);
  EXPECT_EQ(counter(), 0U) << "queued, not received";
  ecrt_master_send(master);
  receive();
  EXPECT_EQ(counter(), 3U) << "queued twice is sent once";
  receive();
  EXPECT_EQ(counter(), 3U) << "nothing new: the old result";
}

TEST_F(CycleTest, WorkingCountersWeighDirectionsPerDatagramAndMissALostSlave) {
  sim::Slave third = inputOnly(); // with outputs of no bytes
  third.defaultMapping.push_back({2, sim::Direction::output, {{0x1600, {{0x7000, 1, 0}}}}});
  request({twoWay(), outputOnly(), third});
  ec_domain_t* outputs = ecrt_master_create_domain(master);
  ec_domain_t* inputs = ecrt_master_create_domain(master);
  map(0);
  map(1, 3);
  map(2, 2);
  add(outputs, 0, 1, 0x7000, 1);
  add(outputs, 1, 3, 0x7000, 1);
  add(inputs, 2, 2, 0x6000, 1);
  ASSERT_EQ(ecrt_master_activate(master), 0);
  EXPECT_EQ(ecrt_domain_data(inputs) - ecrt_domain_data(domain), 12);
  std::vector<std::uint32_t> seen;
  const auto cycle = [&](unsigned int count) {
    for (unsigned int i = 0; i < count; ++i) {
      receive();
      seen.clear();
      for (ec_domain_t* each : {domain, outputs, inputs}) {
        ecrt_domain_process(each);
        ec_domain_state_t state{};
        ecrt_domain_state(each, &state);
        seen.push_back(state.working_counter);
        ecrt_domain_queue(each);
      }
      ecrt_master_send(master);
    }
  };
  cycle(20);
  EXPECT_THAT(seen, ::testing::ElementsAre(3 + 2 + 3, 2, 1));
  EXPECT_EQ(completeness(), EC_WC_COMPLETE);
  const std::uint8_t before = *ecrt_domain_data(inputs);
  cycle(3);
  EXPECT_EQ(*ecrt_domain_data(inputs), static_cast<std::uint8_t>(before + 3)) << "one count for each frame";
  *ecrt_domain_data(outputs) = 0x44;
  ecrt_master_receive(master);
  EXPECT_EQ(*ecrt_domain_data(outputs), 0x44) << "LWR is not copied back";
  bus().setResponding(1, false);
  cycle(2);
  EXPECT_THAT(seen, ::testing::ElementsAre(6, 1, 1));
  EXPECT_EQ(completeness(), EC_WC_INCOMPLETE);
  EXPECT_EQ(masterState().slaves_responding, 3U);
}

TEST_F(CycleTest, AFrameIsFoundAfterItsLatencyUnlessItsDatagramIsSentAnewOrTimesOut) {
  using namespace std::chrono_literals;
  bus().setCycleTime(1us);
  start();
  bus().setFrameLatency(3ms);
  const auto counterAfter = [&](std::chrono::nanoseconds wait) {
    bus().passTime(wait);
    receive();
    return counter();
  };
  send();
  EXPECT_EQ(counterAfter(2998us), 0U) << "still on its way";
  EXPECT_EQ(counterAfter(2us), 3U);
  send();
  bus().passTime(4ms);
  ecrt_domain_queue(domain);
  EXPECT_EQ(counterAfter(0ms), 0U) << "the old frame belongs to nobody";
  bus().setFrameTimeout(1ms);
  send();
  EXPECT_EQ(counterAfter(2ms), 0U);
  EXPECT_EQ(counterAfter(2ms), 0U) << "given up before it came";
}

} // namespace
