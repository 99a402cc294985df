#include "scan/CounterWatch.h"

#include "bus/Patience.h"
#include "host/RealTime.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

namespace igh_bus {
namespace {

constexpr std::size_t PORTS = 4;
constexpr std::size_t PROCESSING_UNIT = 0x0C; // offsets from the first counter
constexpr std::size_t PDI = 0x0D;
constexpr std::size_t FORWARDED = 8;
constexpr std::size_t LOST_LINK = 0x10;

constexpr const char* HEADING = "slave  port  CRC/invalid frame  RX/physical error  forwarded  lost link  "
                                "processing unit  PDI";

// One row for each port; what a slave has once stands in its first row.
void printCounters(std::size_t slave, const std::vector<std::uint8_t>& counters) {
  const auto at = [&](std::size_t offset) { return unsigned{counters[offset]}; };
  for (std::size_t port = 0; port < PORTS; ++port) {
    std::printf("%5zu  %4zu  %17u  %17u  %9u  %9u", slave, port, at(2 * port), at(2 * port + 1),
                at(FORWARDED + port), at(LOST_LINK + port));
    if (port == 0)
      std::printf("  %15u  %3u", at(PROCESSING_UNIT), at(PDI));
    std::printf("\n");
  }
}

// Empty for what is no counter.
std::string counterName(std::size_t offset) {
  if (offset < FORWARDED)
    return format("port %zu  %s", offset / 2, offset % 2 == 0 ? "CRC/invalid frame" : "RX/physical error");
  if (offset < FORWARDED + PORTS)
    return format("port %zu  forwarded", offset - FORWARDED);
  if (offset >= LOST_LINK)
    return format("port %zu  lost link", offset - LOST_LINK);
  return offset == PROCESSING_UNIT ? "processing unit" : offset == PDI ? "PDI" : "";
}

std::string timeOfDay() {
  const auto now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return format("%02d:%02d:%02d", parts.tm_hour, parts.tm_min, parts.tm_sec);
}

// False when a signal asked for the end.
bool pause(double ns) {
  using namespace std::chrono;
  constexpr auto SLICE = milliseconds(100); // a signal may come before the sleep
  const auto end = steady_clock::now() + nanoseconds(static_cast<std::int64_t>(ns));
  for (auto left = end - steady_clock::now(); left.count() > 0 && !StopSignals::requested();
       left = end - steady_clock::now())
    std::this_thread::sleep_for(std::min<nanoseconds>(SLICE, left));
  return !StopSignals::requested();
}

} // namespace

CounterWatch::Counters CounterWatch::look(std::size_t slave, std::string* failure) const {
  const Patience patience;
  try {
    return m_device.read(static_cast<std::uint16_t>(slave), ERROR_COUNTERS, ERROR_COUNTER_BYTES);
  } catch (const Failure& reason) {
    *failure = failure->empty() ? reason.what() : *failure;
    return {};
  }
}

void CounterWatch::show() {
  std::string failure;
  std::printf("%s\n", HEADING);
  for (std::size_t slave = 0; slave < m_slaves.size(); ++slave) {
    m_counters[slave] = look(slave, &failure);
    if (m_counters[slave].empty())
      std::printf("%5zu     -  cannot be reached\n", slave);
    else
      printCounters(slave, m_counters[slave]);
  }
  if (!failure.empty())
    throw Failure(busError, failure);
}

void CounterWatch::clear() {
  std::string failure;
  for (std::size_t slave = 0; slave < m_slaves.size(); ++slave) {
    const Patience patience;
    try {
      m_device.clearErrorCounters(static_cast<std::uint16_t>(slave));
      m_counters[slave].assign(ERROR_COUNTER_BYTES, 0);
    } catch (const Failure& reason) {
      failure = failure.empty() ? reason.what() : failure;
      std::printf("%5zu     -  cannot be reached\n", slave);
    }
  }
  if (!failure.empty())
    throw Failure(busError, failure);
  std::printf("All counters are cleared.\n");
}

// Counters stop at 255. One that has fallen was cleared meanwhile, and what it shows has come since.
unsigned int CounterWatch::tellGrowth(std::size_t slave, const Counters& now) const {
  constexpr std::uint8_t HIGHEST = 255;
  const auto& before = m_counters[slave];
  unsigned int grown = 0;
  for (std::size_t offset = 0; offset < now.size(); ++offset) {
    const std::uint8_t base =
        before.empty() || before[offset] > now[offset] ? std::uint8_t{0} : before[offset];
    const auto name = counterName(offset);
    if (name.empty() || (before.empty() ? true : now[offset] == base))
      continue;
    std::printf("%s  %s  %s  %u (+%d)%s\n", timeOfDay().c_str(), slaveText(slave, m_slaves).c_str(),
                name.c_str(), unsigned{now[offset]}, now[offset] - base,
                now[offset] == HIGHEST ? ", where it stops" : "");
    ++grown;
  }
  return grown;
}

void CounterWatch::watch(double intervalNs) {
  const StopSignals signals;
  unsigned int grown = 0;
  std::printf("Watching; only what grows is told.\n");
  std::fflush(stdout);
  while (pause(intervalNs)) {
    for (std::size_t slave = 0; slave < m_slaves.size() && !StopSignals::requested(); ++slave) {
      std::string failure;
      const auto now = look(slave, &failure);
      const bool interrupted = now.empty() && StopSignals::requested(); // which says nothing of the slave
      if (now.empty() != m_counters[slave].empty() && !interrupted)
        std::printf("%s  %s  %s\n", timeOfDay().c_str(), slaveText(slave, m_slaves).c_str(),
                    now.empty() ? "cannot be reached" : "answers again");
      grown += tellGrowth(slave, now);
      m_counters[slave] = now;
    }
    std::fflush(stdout);
  }
  std::printf("%u times a counter grew.\n", grown);
}

} // namespace igh_bus
