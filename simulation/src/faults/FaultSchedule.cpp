#include "faults/FaultSchedule.h"

namespace ethercat_simulation {

namespace {

// A number from 0 to 1 that depends on nothing else: a line's chances do not change with the other lines.
double chance(std::uint64_t seed, std::uint64_t line, std::uint64_t cycle) {
  constexpr double RANGE = 18446744073709551616.0; // 2^64
  std::uint64_t mixed = (seed << 32U ^ line) + cycle * 0x9E3779B97F4A7C15U;
  for (int round = 0; round < 2; ++round) {
    mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
    mixed ^= mixed >> 31U;
  }
  return static_cast<double>(mixed) / RANGE;
}

void begin(BusFaults& bus, const Fault& fault) {
  switch (fault.kind) {
  case FaultKind::silentSlave:
    return bus.setResponding(fault.slave, false);
  case FaultKind::linkDown:
    return bus.setLinkUp(false);
  case FaultKind::wireBreak:
    return bus.setWireBroken(fault.slave, true);
  case FaultKind::powerOff:
    return bus.setPowered(fault.slave, false);
  case FaultKind::alError:
    return bus.setAlError(fault.slave, fault.alState, fault.alCode);
  case FaultKind::sdoAbort:
    bus.setSdoFault(fault.slave, fault.index, fault.subindex, SdoFault::abort);
    return;
  case FaultKind::sdoSilence:
    bus.setSdoFault(fault.slave, fault.index, fault.subindex, SdoFault::timeOut);
    return;
  case FaultKind::clockStep:
    return bus.stepReferenceClock(fault.stepNs);
  case FaultKind::driveTrouble:
    bus.setDriveTrouble(fault.slave, fault.trouble, true, fault.errorCode);
    return;
  case FaultKind::lostFrame:
  case FaultKind::lateFrame:
  case FaultKind::errorCounter:
    return;
  }
}

// What happens in each cycle of the fault.
void last(BusFaults& bus, const Fault& fault) {
  if (fault.kind == FaultKind::lostFrame) {
    bus.dropFrames(1);
  } else if (fault.kind == FaultKind::lateFrame) {
    bus.delayFrames(1);
  } else if (fault.kind == FaultKind::errorCounter) {
    bus.addErrorCount(fault.slave, fault.counter, 1);
  }
}

void end(BusFaults& bus, const Fault& fault) {
  switch (fault.kind) {
  case FaultKind::silentSlave:
    return bus.setResponding(fault.slave, true);
  case FaultKind::linkDown:
    return bus.setLinkUp(true);
  case FaultKind::wireBreak:
    return bus.setWireBroken(fault.slave, false);
  case FaultKind::powerOff:
    return bus.setPowered(fault.slave, true);
  case FaultKind::alError:
    return bus.setAlError(fault.slave, fault.alState, 0);
  case FaultKind::sdoAbort:
  case FaultKind::sdoSilence:
    bus.setSdoFault(fault.slave, fault.index, fault.subindex, SdoFault::none);
    return;
  case FaultKind::driveTrouble:
    bus.setDriveTrouble(fault.slave, fault.trouble, false, fault.errorCode);
    return;
  case FaultKind::lostFrame:
  case FaultKind::lateFrame:
  case FaultKind::errorCounter:
  case FaultKind::clockStep:
    return;
  }
}

// Whether such a fault begins at all and lasts.
bool isSchedulable(const Fault& fault) {
  const int beginnings =
      (fault.at != 0 ? 1 : 0) + (fault.every != 0 ? 1 : 0) + (fault.probability > 0 ? 1 : 0);
  const bool isCounter = fault.counter >= FIRST_ERROR_COUNTER && fault.counter <= LAST_ERROR_COUNTER;
  return beginnings == 1 && fault.duration > 0 && (fault.kind != FaultKind::errorCounter || isCounter);
}

} // namespace

bool needsSlave(FaultKind kind) {
  return kind != FaultKind::lostFrame && kind != FaultKind::lateFrame && kind != FaultKind::linkDown &&
         kind != FaultKind::clockStep;
}

bool needsObject(FaultKind kind) {
  return kind == FaultKind::sdoAbort || kind == FaultKind::sdoSilence;
}

bool needsDrive(FaultKind kind) {
  return kind == FaultKind::driveTrouble;
}

bool FaultSchedule::add(const Fault& fault) {
  const bool hasPlace = !needsSlave(fault.kind) || m_bus.hasSlave(fault.slave);
  const bool hasObject =
      !needsObject(fault.kind) || m_bus.hasObject(fault.slave, fault.index, fault.subindex);
  const bool hasDrive = !needsDrive(fault.kind) || (m_bus.hasDrive(fault.slave) && fault.errorCode != 0);
  const bool accepted = isSchedulable(fault) && hasPlace && hasObject && hasDrive;
  if (accepted) {
    m_lines.push_back({fault, 0});
  }
  return accepted;
}

void FaultSchedule::clear() {
  for (const Line& line : m_lines) {
    if (line.left > 0) {
      end(m_bus, line.fault);
    }
  }
  m_lines.clear();
}

void FaultSchedule::start() {
  m_cycle = 0;
}

void FaultSchedule::stop() {
  for (Line& line : m_lines) {
    if (line.left > 0 && !line.fault.acrossActivations) {
      end(m_bus, line.fault);
      line.left = 0;
    }
  }
}

bool FaultSchedule::begins(const Fault& fault, std::size_t number) const {
  if (fault.at != 0) {
    return cycleOf(fault) == fault.at;
  }
  if (fault.every != 0) {
    return cycleOf(fault) % fault.every == 0;
  }
  return chance(m_seed, number, cycleOf(fault)) < fault.probability;
}

void FaultSchedule::step() {
  ++m_cycle;
  ++m_total;
  for (std::size_t number = 0; number < m_lines.size(); ++number) {
    Line& line = m_lines[number];
    if (line.left > 0 && --line.left == 0) {
      end(m_bus, line.fault);
    }
    if (line.left == 0 && begins(line.fault, number)) {
      line.left = line.fault.duration;
      begin(m_bus, line.fault);
    }
    if (line.left > 0) {
      last(m_bus, line.fault);
    }
  }
}

} // namespace ethercat_simulation
