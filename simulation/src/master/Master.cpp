#include "master/Master.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace ethercat_simulation {

namespace {

constexpr SdoPace REAL_SDO_PACE{{0, 32 * MILLISECOND}, {0, 4900 * MILLISECOND}};

SdoPace countedPace(unsigned int exchanges) {
  constexpr unsigned int UNANSWERED_FACTOR = 10;
  return {{exchanges, 0}, {exchanges * UNANSWERED_FACTOR, 0}};
}

Timing timingOfEnvironment() {
  const char* name = std::getenv("ETHERCAT_SIMULATION_TIMING");
  return name != nullptr && std::string_view(name) == "fast" ? Timing::fast : Timing::real;
}

} // namespace

Master::Master(unsigned int index) : m_index(index) {
  setTiming(timingOfEnvironment());
}

void Master::setTiming(Timing timing) {
  m_topology.setTiming(timing);
  m_sdoPace = timing == Timing::real ? REAL_SDO_PACE : countedPace(3);
}

void Master::setSdoCycles(unsigned int exchanges) {
  m_sdoPace = countedPace(std::max(exchanges, 1U));
}

bool Master::reserve() {
  if (m_reservation.held()) {
    std::fprintf(stderr, "Failed to reserve master %u: Device or resource busy\n", m_index);
    return false;
  }
  m_reservation.begin();
  m_topology.drive(Topology::Drive::held);
  return true;
}

void Master::release() {
  deactivate();
  m_reservation.end();
  m_topology.drive(Topology::Drive::nobody);
}

int Master::activate() {
  if (m_reservation.active()) {
    std::fprintf(stderr, "Master %u is already active.\n", m_index);
    return 0;
  }
  const int result = m_setup.arrange(m_reservation.mapsImage());
  if (result == 0) {
    m_clock.start();
    m_schedule.start();
    m_reservation.activate();
    m_topology.drive(Topology::Drive::running);
  }
  return result;
}

void Master::deactivate() {
  m_setup.clear();
  if (m_reservation.active()) {
    m_schedule.stop();
    m_record.flush();
    m_reservation.deactivate();
    m_topology.drive(Topology::Drive::held);
  }
  m_traffic.stop();
}

void Master::end() {
  release();
  while (m_topology.line().size() > 0) {
    m_topology.remove(0);
  }
  m_topology.catchUp();
}

void Master::send() {
  m_time.passCycle();
  if (m_reservation.active()) {
    m_schedule.step();
  }
  m_topology.seeLink();
  if (!m_topology.linkSeen()) {
    m_traffic.refuse(m_setup.domains());
  } else if (!m_traffic.transmit(m_setup.domains())) {
    m_topology.countLostFrame();
  }
  m_topology.stepDrives();
  if (m_reservation.active()) {
    m_record.take(m_schedule.cycle());
    m_observers.call(m_schedule.cycle());
  }
}

void Master::receive() {
  using Answer = Traffic::Answer;
  const Answer answer = m_traffic.receive(m_setup.domains(), m_topology.linkSeen());
  if (answer != Answer::none) {
    m_topology.step(answer == Answer::frame);
  }
  // A refused frame is an answer as well: the state machine learns from it that the link is down.
  if (answer == Answer::frame || answer == Answer::refusal) {
    stepSdoRequests();
  }
}

void Master::catchUp() {
  if (!m_reservation.active()) {
    m_topology.catchUp();
    if (m_sdoPace.isInTime()) {
      stepSdoRequests();
    }
  }
}

} // namespace ethercat_simulation
