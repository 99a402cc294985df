// The commands that need no reservation, beside an application that cycles in a thread of its own; AL states
// and counters that are watched.
#include "OneDrive.h"

#include <atomic>
#include <csignal>
#include <igh_master.h>
#include <thread>

namespace {

class Beside : public OneDrive {
protected:
  Beside() : OneDrive({{0x2000, 0, {1, 2}}}) {}
  static void expect(const std::string& line, const std::string& expected, int expectedStatus = 0) {
    const auto [status, out, err] = runHere(line);
    EXPECT_EQ(status, expectedStatus) << line << ": " << err;
    EXPECT_THAT(out + err, testing::HasSubstr(expected)) << line;
  }
  static void awaitThat(const std::function<bool()>& condition) {
    for (int i = 0; i < 30000 && !condition(); ++i)
      usleep(1000);
  }
};

// Brings the bus to OP and cycles until its end.
class Application {
public:
  Application() {
    igh_master_initialize_ex(0, 1000000, false, false);
    igh_master_append_eni(0, (MACHINE_DIR + std::string("servo_drive.xml")).c_str());
    igh_master_scan(0, nullptr);
    igh_master_config_all_slave(0);
    EXPECT_TRUE(igh_master_active(0));
    m_thread = std::thread([this] {
      while (!m_end) {
        igh_master_exchange(0, nullptr, nullptr);
        usleep(200);
      }
    });
  }
  ~Application() {
    m_end = true;
    m_thread.join();
    igh_master_uninitialize(0);
  }

private:
  std::atomic<bool> m_end{false};
  std::thread m_thread;
};

TEST_F(Beside, NothingThatLooksAtTheBusDisturbsTheApplication) {
  const Application application;
  awaitThat([] { return bus().alState(0) == 8; });
  const auto reservations = bus().callCount(Call::requestMaster);
  expect("sdo read 0 0x2000", "= 01 02 (513)");
  expect("sdo write 0 0x2000 0304 --raw", "set to 03 04");
  expect("sdo list 0 0x2000", "03 04 (1027)");
  expect("reg read 0 0x0130 2", "0x0130: 08 00");
  expect("reg write 0 0x0300 20 --yes", "zeros written to 20 bytes");
  expect("errors --clear", "All counters are cleared");
  expect("scan -v", "OP, AL status code 0x0000: no error");
  EXPECT_EQ(bus().alState(0), 8);
  EXPECT_TRUE(bus().active());
  expect("states 0 SAFEOP", "slave 0 (EM500): SAFEOP\n");
  EXPECT_EQ(bus().alState(0), 4);
  expect("states 0 OP", "slave 0 (EM500): OP\n");
  EXPECT_EQ(bus().callCount(Call::requestMaster), reservations);
}

TEST_F(Beside, StatesAreReachedRefusedOrNotReachedInTime) {
  bus().addSlave(Slave{});
  expect("states 1 init", "slave 1: INIT\n");
  EXPECT_EQ(bus().alState(0), 2);
  EXPECT_EQ(bus().alState(1), 1); // outlasts the program
  expect("states all PREOP", "slave 0 (EM500): PREOP\nslave 1: PREOP\n");
  expect(
      "states 1 0 SAFEOP",
      "slave 1: PREOP + ERROR, refused SAFEOP, AL status 0x0011: state change that is not possible\n"
      "slave 0 (EM500): PREOP + ERROR, refused SAFEOP, AL status 0x0011: state change that is not possible\n"
      "igh_bus: 2 of 2 slaves did not reach SAFEOP\n",
      3);
  EXPECT_EQ(bus().callCount(Call::requestMaster), 0U);
  expect("states 0 PREOP --through-library", "slave 0 (EM500): PREOP\n");
  EXPECT_EQ(bus().callCount(Call::requestMaster), 1U);
  bus().failNext(Call::deviceIoctl, -EPERM);
  expect("states 0 INIT", "slave 0, its state: this needs the right to write /dev/EtherCAT0", 3);
  expect("states 0 RUN", "state 'RUN': use INIT, PREOP, BOOT, SAFEOP or OP", 2);
  expect("states 0 2 INIT", "slave 2: the bus has slaves 0 to 1", 2);
  expect("states all", "SLAVE... STATE", 2);
  EXPECT_EQ(bus().alState(0), 2);
  bus().setTiming(Timing::real);
  bus().setCycleTime(std::chrono::milliseconds(1)); // of a bus that nobody cycles: nothing goes on
  expect("states 0 INIT --timeout 0.05", "slave 0 (EM500): PREOP, not yet INIT\n", 3);
}

TEST_F(Beside, ErrorsWatchTellsWhatGrewUntilASignalComes) {
  const auto nextRound = [] { // the counters are read once in each
    const auto seen = bus().callCount(Call::deviceIoctl);
    awaitThat([&] { return bus().callCount(Call::deviceIoctl) >= seen + 2; });
  };
  for (const int signal : {SIGINT, SIGTERM}) {
    bus().setRegisters(0, 0x0300, std::vector<std::uint8_t>(20));
    bus().addErrorCount(0, 0x0310, 2);
    std::thread person([&] {
      nextRound();
      bus().addErrorCount(0, 0x030C, 255);
      bus().addErrorCount(0, 0x0310, 3);
      nextRound();
      bus().setRegisters(0, 0x0310, {1}); // cleared by somebody, and one since
      nextRound();
      bus().failNext(Call::deviceIoctl, -EIO);
      nextRound();
      kill(getpid(), signal);
    });
    const auto [status, out, err] = runHere("errors --watch --interval 100ms");
    person.join();
    EXPECT_EQ(status, 0) << err;
    const std::string line = "[0-9:]{8}  slave 0 \\(EM500\\)  ";
    EXPECT_THAT(out.substr(out.find("Watching")),
                testing::MatchesRegex("Watching; only what grows is told.\n" + line +
                                      "processing unit  255 \\(\\+255\\), where it stops\n" + line +
                                      "port 0  lost link  5 \\(\\+3\\)\n" + line +
                                      "port 0  lost link  1 \\(\\+1\\)\n" + line + "cannot be reached\n" +
                                      line + "answers again\n3 times a counter grew.\n"));
  }
  expect("errors --watch --interval 1ms", "the shortest is 100ms", 2);
}

} // namespace
