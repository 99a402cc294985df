// The control side of a master: orders for its parts, and what they have to tell.
#include "master/Master.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace ethercat_simulation {

namespace {

SdoPace countedPace(unsigned int exchanges) {
  constexpr unsigned int UNANSWERED_FACTOR = 10;
  return {{exchanges, 0}, {exchanges * UNANSWERED_FACTOR, 0}};
}

} // namespace

Timing timingOfEnvironment() {
  const char* name = std::getenv("ETHERCAT_SIMULATION_TIMING");
  return name != nullptr && std::string_view(name) == "fast" ? Timing::fast : Timing::real;
}

unsigned int Master::addSlave(const Slave& slave) {
  m_topology.insert(m_topology.wireSize(), slave);
  return static_cast<unsigned int>(m_topology.wireSize() - 1);
}

void Master::setTiming(Timing timing) {
  m_topology.setTiming(timing);
  m_sdoPace =
      timing == Timing::real ? SdoPace{{0, 32 * MILLISECOND}, {0, 4900 * MILLISECOND}} : countedPace(3);
}

void Master::setCycleTime(std::chrono::nanoseconds cycle) {
  m_time.setCycle(cycle.count());
}

void Master::passTime(std::chrono::nanoseconds time) {
  m_time.pass(time.count());
}

void Master::setClimbCycles(unsigned int cyclesPerTransition) {
  m_topology.setClimbCycles(cyclesPerTransition);
}

void Master::setFrameLatency(std::chrono::nanoseconds latency) {
  m_latency = latency.count();
}

void Master::setFrameTimeout(std::chrono::nanoseconds timeout) {
  m_timeout = timeout.count();
}

void Master::setScanCycles(unsigned int cycles) {
  m_topology.setScanCycles(cycles);
}

void Master::setSdoCycles(unsigned int exchanges) {
  m_sdoPace = countedPace(std::max(exchanges, 1U));
}

void Master::setReferenceClock(const ReferenceClock& clock) {
  m_clock.runFree(clock);
}

void Master::setClockOffsetCycles(unsigned int cycles) {
  m_clock.setOffsetCycles(cycles);
}

void Master::setReactivationUnmapped(bool unmapped) {
  m_reactivationUnmapped = unmapped;
}

void Master::setImageNeverMapped(bool never) {
  m_imageNeverMapped = never;
}

void Master::failNext(Call call, int result, unsigned int after) {
  m_recorder.orderFailure(call, result, after);
}

std::size_t Master::slaveCount() const {
  return m_topology.wireSize();
}

std::uint8_t Master::alState(unsigned int position) const {
  m_topology.catchUp();
  const SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr ? unit->state() : std::uint8_t{0};
}

bool Master::reserved() const {
  return m_handle != nullptr;
}

bool Master::active() const {
  return m_active;
}

int Master::openDeviceFiles() const {
  return m_deviceFiles;
}

std::uint64_t Master::framesSent() const {
  return m_framesSent;
}

std::vector<std::uint8_t> Master::outputs(unsigned int position) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr ? unit->outputs() : std::vector<std::uint8_t>();
}

void Master::setInputs(unsigned int position, const std::vector<std::uint8_t>& bytes) {
  if (SlaveUnit* unit = m_topology.onWire(position)) {
    unit->pinInputs(bytes);
  }
}

std::vector<std::uint8_t> Master::objectValue(unsigned int position, std::uint16_t index,
                                              std::uint8_t subindex) const {
  const SlaveUnit* unit = m_topology.onWire(position);
  const auto* value = unit != nullptr ? unit->dictionary().value(index, subindex) : nullptr;
  return value != nullptr ? *value : std::vector<std::uint8_t>();
}

bool Master::setObjectValue(unsigned int position, std::uint16_t index, std::uint8_t subindex,
                            const std::vector<std::uint8_t>& bytes) {
  SlaveUnit* unit = m_topology.onWire(position);
  return unit != nullptr && unit->dictionary().setValue(index, subindex, bytes);
}

std::uint64_t Master::callCount(Call call) const {
  return m_recorder.counted(call);
}

void Master::setTracing(bool on) {
  m_recorder.setTracing(on);
}

const std::vector<TraceEntry>& Master::trace() const {
  return m_recorder.trace();
}

void Master::clearTrace() {
  m_recorder.clearTrace();
}

const Misuse& Master::misuse() const {
  return m_recorder.misuse();
}

} // namespace ethercat_simulation
