#include "EthercatObject/Reservation/Reservation.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

int openDevice(unsigned int deviceId) {
  char path[sizeof "/dev/EtherCAT4294967295"];
  std::snprintf(path, sizeof path, "/dev/EtherCAT%u", deviceId);
  return open(path, O_RDWR);
}

} // namespace

CReservation::CReservation(unsigned int deviceId)
    : m_uiDeviceId(deviceId), m_pMaster(ecrt_request_master(deviceId)), m_iDeviceFd(openDevice(deviceId)) {}

void CReservation::release() {
  if (m_iDeviceFd != -1) {
    close(m_iDeviceFd);
    m_iDeviceFd = -1;
  }
  if (m_pMaster != nullptr) {
    std::fputs("ecrt_release_master\n", stdout);
    ecrt_release_master(m_pMaster);
    m_pMaster = nullptr;
  }
}

void CReservation::renew() {
  ecrt_release_master(m_pMaster);
  m_pMaster = ecrt_request_master(m_uiDeviceId);
  m_bUsed = false;
}

bool CReservation::activate() {
  m_bActive = ecrt_master_activate(m_pMaster) == 0;
  m_bUsed = m_bUsed || m_bActive;
  return m_bActive;
}

void CReservation::deactivate() {
  static_cast<void>(ecrt_master_deactivate(m_pMaster));
  m_bActive = false;
}
