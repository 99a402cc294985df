// Configuration of the slaves, activation and deactivation.
#include "EthercatObject/CEthercatMaster.h"

#include <cstdio>

namespace {

bool allConfigured(const SLAVE_LIST& slaves) {
  for (const auto& slave : slaves) {
    if (slave->getSlaveCore() == nullptr) {
      std::printf("slave %d do not config\n", static_cast<int>(slave->getSlaveIndex() + 1));
      return false;
    }
  }
  return true;
}

} // namespace

bool CEthercatMaster::configSlave(unsigned int slaveIndex) {
  if (slaveIndex >= m_vecSlaves.size()) {
    return false;
  }
  m_vecSlaves[slaveIndex]->configEthercatSlave();
  return true;
}

void CEthercatMaster::configAllSlaves() {
  for (const auto& slave : m_vecSlaves) {
    slave->configEthercatSlave();
  }
}

bool CEthercatMaster::active() {
  const bool wasActive = m_reservation.isActive();
  deactive();
  m_watch.resetError();
  if (wasActive) {
    reconfigureSlaves();
  }
  if (!isScanned()) {
    return false;
  }
  if (m_vecSlaves.empty()) {
    std::fputs("can't found any slave, you should scan slaves first.\n", stdout);
    return false;
  }
  const bool usedReservation = m_reservation.isUsed();
  if (!allConfigured(m_vecSlaves) || !activateOnce()) {
    return false;
  }
  if (usedReservation && m_domain.isImageMissing() && !activateOnNewReservation()) {
    return false;
  }
  resetCycleState();
  m_pdoHandles.arrange(m_domain.image());
  return m_reservation.isActive();
}

// The platform has freed the configurations on deactivation, so every slave that had one needs a new one. One
// that was refused may be granted now: until the deactivation, slaves of an earlier scan kept their places.
void CEthercatMaster::reconfigureSlaves() {
  for (const auto& slave : m_vecSlaves) {
    if (slave->isConfigurationWanted()) {
      slave->configEthercatSlave();
    }
  }
  m_sdoRequests.renew([this](unsigned int slave) { return m_vecSlaves[slave]->getSlaveCore(); });
}

// False when the registration failed; whether the platform activated is told by the reservation.
bool CEthercatMaster::activateOnce() {
  if (!m_domain.create(m_reservation.master()) || !m_registration.registerAt(m_domain.core())) {
    std::fputs("PDO entry registration failed!\n", stderr);
    return false;
  }
  if (m_clock.isEnabled()) {
    setUpDistributedClocks();
  }
  if (m_reservation.activate()) {
    m_domain.map(m_registration.measureImage(m_vecSlaves));
  }
  return true;
}

// Patched releases of the platform map no process image on the second activation of one reservation, and
// nothing but the null image tells. A new reservation is as good as the first one. False when a text has said
// what failed.
bool CEthercatMaster::activateOnNewReservation() {
  deactivatePlatform();
  m_reservation.renew();
  if (m_reservation.master() != nullptr) {
    reconfigureSlaves();
    if (!allConfigured(m_vecSlaves) || !activateOnce()) {
      return false;
    }
    if (!m_domain.isImageMissing()) {
      return true;
    }
    deactivatePlatform();
  }
  for (const auto& slave : m_vecSlaves) {
    slave->dropConfiguration();
  }
  m_sdoRequests.drop();
  std::fputs("Failed to map the process image after a re-activation.\n", stderr);
  return false;
}

void CEthercatMaster::setUpDistributedClocks() {
  CEthercatSlave* reference = nullptr;
  for (const auto& slave : m_vecSlaves) {
    if (slave->initEthercatSlaveDC(m_uiExchangePeriod) && reference == nullptr) {
      reference = slave.get();
    }
  }
  m_clock.start(reference != nullptr);
  if (reference != nullptr && m_clock.followsReference()) {
    reference->setAsReferenceClock();
  }
}

void CEthercatMaster::resetCycleState() {
  m_clock.settle();
  m_watch.restart();
  m_ullCycleCounter = 0;
  m_commDiag.reset();
}

int CEthercatMaster::deactive() {
  if (m_reservation.isActive()) {
    m_watch.forgetStates();
    m_clock.printEnd(m_watch.alStates());
    std::fputs("ecrt_master_deactivate\n", stdout);
    deactivatePlatform();
  }
  m_clock.reset();
  return 0;
}

void CEthercatMaster::deactivatePlatform() {
  m_domain.unmap();
  awaitSdoTransfers();
  m_reservation.deactivate();
  m_sdoRequests.issued().clear();
  m_domain.drop();
}
