#include "EthercatObject/BusWatch/BusWatch.h"

void CBusWatch::report(unsigned int slave, int errorCode) {
  m_iLastError = errorCode;
  if (m_pfnErrorCallback != nullptr) {
    m_pfnErrorCallback(m_uiDeviceId, slave, errorCode, m_pErrorCallbackUser);
  }
}

void CBusWatch::checkLink(ec_master_t* master) {
  ec_master_link_state_t state{};
  static_cast<void>(ecrt_master_link_state(master, 0, &state));
  if (state.link_up == 0) {
    report(ETHERCAT_ERROR_WHOLE_MASTER, ETHERCAT_ERROR_LINK_DOWN);
  }
}

void CBusWatch::checkMaster(ec_master_t* master, unsigned long scannedSlaves) {
  ec_master_state_t state{};
  static_cast<void>(ecrt_master_state(master, &state));
  const bool scanBusy = isScanBusy(state, 0);
  const bool scanEnded = m_bScanBusy && !scanBusy;
  m_bScanBusy = scanBusy;
  if (scanEnded && state.slaves_responding > scannedSlaves) {
    report(ETHERCAT_ERROR_WHOLE_MASTER, ETHERCAT_ERROR_SLAVE_ADDED);
  } else if (scanEnded && state.slaves_responding < scannedSlaves) {
    report(ETHERCAT_ERROR_WHOLE_MASTER, ETHERCAT_ERROR_SLAVE_LOST);
  }
  m_uiMasterState = state.al_states;
}
