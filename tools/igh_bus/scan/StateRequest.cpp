#include "scan/StateRequest.h"

#include "bus/Patience.h"
#include "bus/SlaveList.h"
#include "host/RealTime.h"
#include "scan/AlStatusCodes.h"
#include "text/Failure.h"
#include "text/Text.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace igh_bus {
namespace {

constexpr std::uint16_t AL_STATUS = 0x0130;
constexpr std::uint16_t AL_STATUS_CODE = 0x0134;
constexpr std::uint8_t STATE_AND_ERROR = 0x1F;

constexpr std::pair<const char*, std::uint8_t> STATES[] = {
    {"INIT", 1}, {"PREOP", 2}, {"BOOT", 3}, {"SAFEOP", 4}, {"OP", 8}};

} // namespace

std::uint8_t parseState(const std::string& text) {
  std::string upper = text;
  for (auto& letter : upper)
    letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  for (const auto& [name, state] : STATES) {
    if (upper == name)
      return state;
  }
  throw Failure(usageError, "state '" + text + "': use INIT, PREOP, BOOT, SAFEOP or OP, behind the slaves");
}

// What the master keeps of a slave's state is older than the request may be; the register is not.
StateRequest::Seen StateRequest::look(std::uint16_t slave) const {
  const Patience patience;
  Seen seen;
  if (ecrt_master_get_slave(m_master.handle(), slave, &seen.info) < 0)
    return seen; // a rescan: not there for a moment
  replaceControls(seen.info.name);
  if (const auto status = m_device.reg(slave, AL_STATUS))
    seen.info.al_state = static_cast<std::uint8_t>(*status & STATE_AND_ERROR);
  seen.reached = seen.info.al_state == m_wanted;
  return seen;
}

std::string StateRequest::text(const Seen& seen) const {
  auto state = slaveStateText(seen.info.al_state);
  if (seen.reached)
    return state;
  const auto wanted = slaveStateText(m_wanted);
  const Patience patience;
  const auto code = m_device.reg(seen.info.position, AL_STATUS_CODE).value_or(0);
  return state + (seen.info.error_flag != 0 ? ", refused " : ", not yet ") + wanted +
         (code == 0 ? "" : format(", AL status 0x%04X: ", unsigned{code}) + alStatusText(code));
}

void StateRequest::await(const std::vector<std::uint16_t>& slaves, double seconds) const {
  using namespace std::chrono;
  constexpr auto BETWEEN = milliseconds(20);
  const StopSignals signals;
  const auto end = steady_clock::now() + duration<double>(seconds);
  std::vector<Seen> seen(slaves.size());
  const auto lookAll = [&] {
    for (std::size_t i = 0; i < slaves.size(); ++i)
      seen[i] = seen[i].over() ? seen[i] : look(slaves[i]);
    return std::all_of(seen.begin(), seen.end(), [](const Seen& one) { return one.over(); });
  };
  while (!lookAll() && steady_clock::now() < end && !StopSignals::requested())
    std::this_thread::sleep_for(BETWEEN);
  std::size_t there = 0;
  for (std::size_t i = 0; i < slaves.size(); ++i) {
    const auto* const name = seen[i].info.name;
    std::printf("slave %u%s: %s\n", unsigned{slaves[i]}, *name ? format(" (%s)", name).c_str() : "",
                text(seen[i]).c_str());
    there += seen[i].reached ? 1U : 0U;
  }
  if (there != slaves.size())
    throw Failure(busError, format("%zu of %zu slaves did not reach %s", slaves.size() - there, slaves.size(),
                                   slaveStateText(m_wanted).c_str()));
}

} // namespace igh_bus
