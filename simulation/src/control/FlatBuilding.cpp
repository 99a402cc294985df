// ethercat_simulation.h: building, times, what goes on in each cycle.
#include "busfile/BusFile.h"
#include "control/FlatFace.h"

using namespace ethercat_simulation;

namespace {

thread_local unsigned int observersRunning = 0;

void expectOutside() {
  expect(observersRunning == 0, "not from inside an observer");
}

std::chrono::nanoseconds timeOf(uint64_t nanoseconds) {
  expect(nanoseconds <= INT64_MAX, "the time is too long");
  return std::chrono::nanoseconds(nanoseconds);
}

} // namespace

const char* ethercat_simulation_last_error(void) {
  return lastError().c_str();
}

int ethercat_simulation_reset(void) {
  return done([] {
    expectOutside();
    reset();
  });
}

int ethercat_simulation_load(const char* path) {
  return done([&] {
    expectOutside();
    expectNone(loadBusFile(textOf(path)));
  });
}

int ethercat_simulation_build(const char* json) {
  return done([&] {
    expectOutside();
    expectNone(buildBuses(textOf(json)));
  });
}

int ethercat_simulation_configure(unsigned int master, const char* json) {
  return done([&] { expectNone(busOf(master).configure(textOf(json))); });
}

int ethercat_simulation_insert_slave(unsigned int master, unsigned int position, const char* json) {
  return done([&] {
    expect(position <= busOf(master).slaveCount(), "the position is beyond the end of the line");
    Slave slave;
    expectNone(readSlaveText(textOf(json), slave));
    busOf(master).insertSlave(position, slave);
  });
}

int ethercat_simulation_remove_slave(unsigned int master, unsigned int position) {
  return done([&] { slaveOf(master, position).removeSlave(position); });
}

int ethercat_simulation_pass_time(unsigned int master, uint64_t nanoseconds) {
  return done([&] { busOf(master).passTime(timeOf(nanoseconds)); });
}

int ethercat_simulation_set_frame_timeout(unsigned int master, uint64_t nanoseconds) {
  return done([&] { busOf(master).setFrameTimeout(timeOf(nanoseconds)); });
}

int ethercat_simulation_set_clock_offset_cycles(unsigned int master, unsigned int cycles) {
  return done([&] { busOf(master).setClockOffsetCycles(cycles); });
}

int ethercat_simulation_record(unsigned int master, const char* path) {
  return done([&] { busOf(master).setRecord(path != nullptr ? path : ""); });
}

int ethercat_simulation_add_observer(unsigned int master, ethercat_simulation_observer observer,
                                     void* context) {
  return guarded([&] {
    expect(observer != nullptr, "an observer is missing");
    const auto call = [=](Bus& /*bus*/, std::uint64_t cycle) {
      ++observersRunning;
      observer(master, cycle, context);
      --observersRunning;
    };
    return static_cast<int>(busOf(master).addObserver(call));
  });
}

int ethercat_simulation_remove_observer(unsigned int master, int number) {
  return done([&] {
    expect(number > 0 && busOf(master).removeObserver(static_cast<unsigned int>(number)),
           "there is no observer with this number");
  });
}
