#include "check/Bench.h"

#include "run/SlaveLook.h"

#include <algorithm>
#include <chrono>

namespace igh_bus::check {
namespace {

constexpr std::uint32_t OP = 8;

RunOptions optionsOf(const CheckedBus& bus, const BenchMode& mode) {
  RunOptions options = bus.options;
  options.exchangeMode = mode.exchangeMode;
  options.followReference = mode.followReference;
  options.watches = bus.inputs;
  return options;
}

} // namespace

bool Measured::clean() const {
  return inOp == cycles && callbacks == cycles && errors.sum() == 0;
}

Bench::Bench(const CheckedBus& bus, const BenchMode& mode, const std::function<void()>& prepare)
    : m_bus(bus), m_options(optionsOf(bus, mode)), m_session(m_options, prepare),
      m_pacemaker(m_options.periodNs) {
  bus.realTime.lockAllMemory();
  if (mode.followReference)
    m_follower.emplace();
}

bool Bench::step() {
  const bool on = m_pacemaker.wait();
  if (!on) // its times are over, and whoever waits for a slave still needs cycles
    std::this_thread::sleep_for(std::chrono::nanoseconds(m_options.periodNs));
  m_state = m_session.exchange();
  m_clockPoint = m_follower ? m_follower->follow(m_session, m_pacemaker) : std::nullopt;
  return on;
}

// Slaves that were in OP a moment before the activation are told to be there until they have left it.
std::optional<std::uint64_t> Bench::climb(double seconds) {
  constexpr double STALE_SECONDS = 0.5;
  const auto lasting = m_bus.cyclesOf(STALE_SECONDS);
  const auto end = m_session.cycles() + m_bus.cyclesOf(seconds) + lasting;
  m_pacemaker = Pacemaker(m_options.periodNs);
  std::uint64_t since = m_session.cycles();
  while (m_session.cycles() - since < lasting) {
    if (m_session.cycles() >= end || !step())
      return {};
    if (m_state != OP)
      since = m_session.cycles();
  }
  return since - m_activated;
}

Measured Bench::measure(std::uint64_t cycles) {
  std::vector<double> values(m_bus.inputs.size());
  std::vector<bool> moved(values.size());
  for (std::size_t i = 0; i < values.size(); ++i)
    values[i] = m_session.watched(i);
  Measured measured;
  const auto before = m_session.errors().total;
  const auto callbacks = m_session.callbacks();
  m_pacemaker = Pacemaker(m_options.periodNs);
  while (measured.cycles < cycles && step()) {
    ++measured.cycles;
    measured.inOp += m_state == OP ? 1 : 0;
    for (std::size_t i = 0; i < values.size(); ++i)
      moved[i] = moved[i] || m_session.watched(i) != values[i];
  }
  measured.callbacks = m_session.callbacks() - callbacks;
  measured.leftOut = m_pacemaker.leftOut();
  for (std::size_t code = 0; code < before.size(); ++code)
    measured.errors.total[code] = m_session.errors().total[code] - before[code];
  for (std::size_t i = 0; i < moved.size(); ++i) {
    if (moved[i])
      measured.changed.push_back(i);
  }
  return measured;
}

void Bench::reactivate() {
  m_session.reactivate();
  m_activated = m_session.cycles();
}

std::vector<std::string> Bench::belowOp() {
  std::vector<std::string> lines;
  beside([&] {
    const auto sights = SlaveLook(m_options.master, m_bus.slaves).take();
    for (std::size_t slave = 0; slave < sights.size(); ++slave) {
      if (isTroubled(sights[slave]) || isBelowOp(sights[slave]))
        lines.push_back(m_bus.name(slave) + ": " + sightText(sights[slave]));
    }
  });
  return lines;
}

} // namespace igh_bus::check
