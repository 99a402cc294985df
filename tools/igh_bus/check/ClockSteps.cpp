#include "bus/DeviceFile.h"
#include "check/Steps.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <ctime>

namespace igh_bus::check {
namespace {

constexpr std::uint16_t SYSTEM_TIME = 0x0910;
constexpr std::uint16_t TIME_DIFFERENCE = 0x092C; // to what the slave was last told, filtered by itself

// What the library hands to the master as application time while it leads, ns since 2000.
double masterTimeNs() {
  constexpr std::int64_t FROM_1970_TO_2000 = 946684800;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>((now.tv_sec - FROM_1970_TO_2000) * 1000000000 + now.tv_nsec);
}

// Sign and magnitude.
double differenceNs(std::uint64_t word) {
  constexpr std::uint64_t SIGN = 0x80000000;
  const auto magnitude = static_cast<double>(word & (SIGN - 1));
  return (word & SIGN) != 0 ? -magnitude : magnitude;
}

// One slave's clock, looked at several times.
struct Reading {
  std::uint16_t slave;
  double worstNs = 0;    // time difference
  double farthestNs = 0; // of the system time outside the moments before and behind its reading
  bool answered = true;
};

void read(const DeviceFile& file, Reading& reading) {
  const auto difference = file.reg(reading.slave, TIME_DIFFERENCE, sizeof(std::uint32_t));
  const double before = masterTimeNs();
  const auto time = file.reg(reading.slave, SYSTEM_TIME, sizeof(std::uint64_t));
  const double after = masterTimeNs();
  reading.answered = reading.answered && difference && time;
  if (!reading.answered)
    return;
  const double found = differenceNs(*difference);
  if (std::abs(found) >= std::abs(reading.worstNs))
    reading.worstNs = found;
  const auto shown = static_cast<double>(*time);
  reading.farthestNs = std::max({reading.farthestNs, before - shown, shown - after});
}

// Clocks settle after the start: rounds of readings until all of one round are good.
std::vector<Reading> readUntilLocked(const CheckedBus& bus, double boundNs, double outsideNs) {
  constexpr int ROUNDS = 5;
  constexpr int READINGS = 10;
  const DeviceFile file(bus.options.master);
  std::vector<Reading> readings;
  bool locked = false;
  for (int round = 0; round < ROUNDS && !locked && !StopSignals::requested(); ++round) {
    readings.clear();
    for (const auto slave : bus.withClocks)
      readings.push_back({slave});
    for (int i = 0; i < READINGS; ++i) {
      for (auto& reading : readings)
        read(file, reading);
    }
    locked = std::all_of(readings.begin(), readings.end(), [&](const Reading& reading) {
      return reading.answered && std::abs(reading.worstNs) <= boundNs && reading.farthestNs <= outsideNs;
    });
  }
  return readings;
}

// The differences of the library's controller, in its intervals of 1024 cycles.
class Lock {
public:
  static constexpr std::uint64_t INTERVALS = 8;
  static constexpr std::uint64_t INTERVAL_CYCLES = 1024;
  // Between single late frames the difference must rest closer than they are.
  explicit Lock(double boundNs) : m_boundNs(boundNs), m_restNs(boundNs / 10) {}
  void take(const ClockPoint& point);
  bool locked() const { return m_good == INTERVALS; }
  bool any() const { return m_any; }
  double restNs() const { return m_restNs; }
  std::string range() const {
    return format("%.3f to %.3f us", static_cast<double>(m_minimumNs) / 1e3,
                  static_cast<double>(m_maximumNs) / 1e3);
  }
  const ClockPoint& last() const { return m_last; }

private:
  double m_boundNs;
  double m_restNs;
  std::uint64_t m_good = 0; // intervals in a row
  bool m_any = false;
  std::int64_t m_minimumNs = 0; // over these, or of the last one that was not good
  std::int64_t m_maximumNs = 0;
  ClockPoint m_last{};
};

void Lock::take(const ClockPoint& point) {
  const auto within = [](std::int64_t ns, double bound) {
    return std::abs(static_cast<double>(ns)) <= bound;
  };
  const bool good = within(point.minimumNs, m_boundNs) && within(point.maximumNs, m_boundNs) &&
                    within(point.differenceNs, m_restNs);
  const bool goesOn = good && m_good != 0;
  m_minimumNs = goesOn ? std::min(m_minimumNs, point.minimumNs) : point.minimumNs;
  m_maximumNs = goesOn ? std::max(m_maximumNs, point.maximumNs) : point.maximumNs;
  m_good = good ? m_good + 1 : 0;
  m_any = true;
  m_last = point;
}

// How the differences of a failed lock look.
std::string whyNot(const Lock& lock) {
  const double left = std::abs(static_cast<double>(lock.last().differenceNs)) - lock.restNs();
  if (left <= 0)
    return format("the difference rests at %.3f us with single ones of ",
                  static_cast<double>(lock.last().differenceNs) / 1e3) +
           lock.range() + " in the last interval";
  return format("the difference is %.3f us; at one nanosecond in a cycle it takes some %.0f more cycles",
                static_cast<double>(lock.last().differenceNs) / 1e3, left);
}

} // namespace

void checkLeading(const CheckedBus& bus, Bench& bench, Line& line) {
  const double boundNs = bus.clockBoundNs();
  // What a clock shows may be as old as the last frame.
  const double outsideNs = boundNs + bus.options.periodNs;
  std::vector<Reading> readings;
  bench.beside([&] { readings = readUntilLocked(bus, boundNs, outsideNs); });
  std::size_t good = 0;
  double worst = 0;
  for (const auto& reading : readings) {
    const bool near = std::abs(reading.worstNs) <= boundNs && reading.farthestNs <= outsideNs;
    good += reading.answered && near ? 1 : 0;
    worst = std::max(worst, std::abs(reading.worstNs));
    line.details.push_back(
        bus.name(reading.slave) +
        (reading.answered
             ? format(": difference (0x092C) up to %.3f us, system time (0x0910) %s", reading.worstNs / 1e3,
                      reading.farthestNs <= outsideNs
                          ? "that of the master"
                          : format("%.3f us away from the master's", reading.farthestNs / 1e3).c_str())
             : ": its clock cannot be read"));
  }
  if (IGH_BUS_SIMULATED)
    line.details.emplace_back("simulated slaves share one clock, and show no difference by themselves");
  line.judge(good == bus.withClocks.size(), format("%zu of %zu clocks, the worst reading %.3f us away", good,
                                                   bus.withClocks.size(), worst / 1e3));
}

void checkFollowing(const CheckedBus& bus, Bench& bench, Line& line) {
  Lock lock(bus.clockBoundNs());
  const auto start = bench.session().cycles();
  while (!lock.locked() && bench.session().cycles() - start < bus.options.clockCycles && bench.step()) {
    if (const auto& point = bench.clockPoint())
      lock.take(*point);
  }
  const auto cycles = bench.session().cycles() - start;
  line.details.push_back(format("the master's time has moved by %.3f us",
                                static_cast<double>(bench.session().clockOffsetNs()) / 1e3));
  if (!lock.any() && bench.session().clockOffsetNs() == 0)
    line.skip("the reference clock shows the master's own time, so there is nothing to follow");
  else if (lock.locked())
    line.judge(true, format("locked after %" PRIu64 " cycles; the %" PRIu64 " differences since then %s",
                            cycles - Lock::INTERVALS * Lock::INTERVAL_CYCLES,
                            Lock::INTERVALS * Lock::INTERVAL_CYCLES, lock.range().c_str()));
  else
    line.judge(false, format("not locked within %" PRIu64 " cycles: ", cycles) + whyNot(lock));
}

} // namespace igh_bus::check
