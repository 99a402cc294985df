#include "master/Master.h"

#include <cerrno>
#include <cstdio>
#include <thread>

namespace ethercat_simulation {

Master::Master(unsigned int index) : m_index(index) {
  setTiming(timingOfEnvironment());
}

ec_master_t* Master::reserve() {
  if (m_handle == nullptr) {
    m_handle = Handles::instance().create(*this, *this);
    m_activatedBefore = false;
    m_topology.drive(Topology::Drive::held);
    return static_cast<ec_master_t*>(m_handle);
  }
  std::fprintf(stderr, "Failed to reserve master %u: Device or resource busy\n", m_index);
  return nullptr;
}

void Master::release() {
  deactivate();
  Handles::instance().kill(m_handle);
  m_handle = nullptr;
  m_topology.drive(Topology::Drive::nobody);
}

int Master::activate() {
  if (m_active) {
    std::fprintf(stderr, "Master %u is already active.\n", m_index);
    return 0;
  }
  std::size_t size = 0;
  for (const auto& domain : m_domains) {
    if (!domain->fitsDatagrams()) {
      std::fprintf(stderr, "Failed to activate master %u: a sync manager exceeds %zu bytes.\n", m_index,
                   DATAGRAM_CAPACITY);
      return -EINVAL;
    }
    size += domain->size();
  }
  for (const auto& configuration : m_configurations) {
    configuration->allocateProcessData();
  }
  m_image.assign(size, 0);
  std::size_t start = 0;
  for (const auto& domain : m_domains) {
    domain->build(m_image.data(), start, imageIsMapped());
    start += domain->size();
  }
  m_clock.start();
  m_faults.start();
  m_active = true;
  m_activatedBefore = true;
  m_topology.drive(Topology::Drive::running);
  return 0;
}

void Master::chargeBusyRequests(Call call) {
  for (const auto& configuration : m_configurations) {
    if (configuration->hasBusySdoRequest()) {
      m_recorder.addBusyRequest(call, "a");
      return;
    }
  }
}

bool Master::imageIsMapped() const {
  return !m_imageNeverMapped && !(m_activatedBefore && m_reactivationUnmapped);
}

void Master::deactivate() {
  clearConfiguration();
  if (m_active) {
    m_faults.stop(*this);
    m_active = false;
    m_topology.drive(Topology::Drive::held);
  }
  m_clock.stop();
  m_stateMachine = Travel();
}

void Master::clearConfiguration() {
  for (void* handle : m_handles) {
    Handles::instance().kill(handle);
  }
  m_handles.clear();
  m_hasSdoRequests = false;
  m_topology.forgetConfigurations();
  m_domains.clear();
  m_places.clear();
  m_configurations.clear();
  std::vector<std::uint8_t>().swap(m_image);
}

ec_slave_config_t* Master::createConfiguration(std::uint16_t alias, std::uint16_t position,
                                               std::uint32_t vendorId, std::uint32_t productCode) {
  SlaveConfiguration* made = configuration(alias, position, vendorId, productCode);
  if (made == nullptr) {
    return nullptr;
  }
  m_handles.push_back(Handles::instance().create(*made, *this));
  return static_cast<ec_slave_config_t*>(m_handles.back());
}

SlaveConfiguration* Master::configuration(std::uint16_t alias, std::uint16_t position, std::uint32_t vendorId,
                                          std::uint32_t productCode) {
  SlaveConfiguration*& place = m_places[static_cast<std::uint32_t>(alias) << 16U | position];
  if (place == nullptr) {
    m_configurations.push_back(
        std::make_unique<SlaveConfiguration>(*this, alias, position, vendorId, productCode));
    place = m_configurations.back().get();
    m_topology.attach(*place);
    place->loadDefaultMapping();
  } else if (!place->describes(vendorId, productCode)) {
    std::fprintf(stderr, "Slave %s of master %u was configured as another type before.\n",
                 place->place().c_str(), m_index);
    return nullptr;
  }
  return place;
}

ec_domain_t* Master::createDomain() {
  m_domains.push_back(std::make_unique<Domain>(*this, static_cast<unsigned int>(m_domains.size())));
  m_handles.push_back(Handles::instance().create(*m_domains.back(), *this));
  return static_cast<ec_domain_t*>(m_handles.back());
}

ec_sdo_request_t* Master::createSdoRequest(SlaveConfiguration& configuration, const SdoPlace& place,
                                           std::size_t size) {
  SdoRequest& request = configuration.createSdoRequest(place, size);
  m_hasSdoRequests = true;
  m_handles.push_back(Handles::instance().create(request, *this));
  return static_cast<ec_sdo_request_t*>(m_handles.back());
}

bool Master::hasReferenceClock() const {
  for (std::size_t i = 0; i < m_topology.reachedSize(); ++i) {
    if (m_topology.onWire(i)->identity().distributedClocks) {
      return true;
    }
  }
  return false;
}

Flight Master::makeFlight() {
  const bool lost = m_framesToDrop > 0;
  Flight flight{++m_framesSent, lost, !lost && m_framesToDelay > 0, m_latency > 0, 0, 0};
  if (lost) {
    --m_framesToDrop;
    m_topology.countLostFrame();
  } else if (flight.late) {
    --m_framesToDelay;
  }
  if (flight.timed) {
    flight.sent = m_time.now();
    flight.due = flight.sent + m_latency;
  }
  return flight;
}

void Master::send() {
  m_time.passCycle();
  if (m_active) {
    m_faults.step(*this);
  }
  m_topology.seeLink();
  if (m_topology.linkSeen()) {
    transmit();
  } else {
    refuseQueued();
  }
  m_topology.stepDrives();
}

void Master::transmit() {
  const Flight flight = makeFlight();
  for (const auto& domain : m_domains) {
    for (Datagram& datagram : domain->datagrams()) {
      if (datagram.travel().is(TravelState::queued)) {
        datagram.transmit(flight);
      }
    }
  }
  m_clock.transmit(flight);
  m_stateMachine.passed();
  if (!m_stateMachine.is(TravelState::sent)) {
    m_stateMachine.depart(flight);
  }
}

void Master::refuseQueued() {
  for (const auto& domain : m_domains) {
    for (Datagram& datagram : domain->datagrams()) {
      if (datagram.travel().is(TravelState::queued)) {
        datagram.travel().fail();
      }
    }
  }
  m_clock.fail();
  m_stateMachine.fail();
}

void Master::stepSdoRequests() {
  if (m_hasSdoRequests) {
    const Moment now = m_sdoPace.isInTime() ? m_time.now() : 0;
    for (const auto& configuration : m_configurations) {
      configuration->stepSdoRequests(m_sdoPace, now);
    }
  }
}

void Master::receive() {
  for (const auto& domain : m_domains) {
    for (Datagram& datagram : domain->datagrams()) {
      datagram.land(m_time, m_timeout);
    }
  }
  m_clock.land(m_time, m_timeout);
  // A refused frame is an answer as well: the state machine learns from it that the link is down.
  const bool refused = m_stateMachine.is(TravelState::failed) && !m_topology.linkSeen();
  const bool answered = m_stateMachine.arrive(m_time, m_timeout);
  const bool lost = m_stateMachine.is(TravelState::failed) && !refused;
  if (answered || refused || lost) {
    m_stateMachine.settle();
    m_topology.step(answered);
  }
  if (answered || refused) {
    stepSdoRequests();
  }
}

void Master::waitForBus(Moment time) const {
  if (m_topology.inTime() && !m_time.isVirtual()) {
    std::this_thread::sleep_for(std::chrono::nanoseconds(time));
  }
}

void Master::catchUp() {
  if (!m_active) {
    m_topology.catchUp();
    if (m_sdoPace.isInTime()) {
      stepSdoRequests();
    }
  }
}

} // namespace ethercat_simulation
