#ifndef ETHERCATOBJECT_BUSWATCH_BUSWATCH_H
#define ETHERCATOBJECT_BUSWATCH_BUSWATCH_H

#include "EthercatObject/Base/PlatformRelease.h"

#include <atomic>
#include <ecrt.h>
#include <igh_master.h>

// What the states of a cycle mean: the AL states of the bus, the errors 1 to 5, and the wish to end. The
// checks are for the cycle; each asks the platform for one state.
class CBusWatch {
public:
  typedef void (*ERROR_CALLBACK)(unsigned int deviceId, unsigned int slave, int errorCode, void* userData);

  explicit CBusWatch(unsigned int deviceId) : m_uiDeviceId(deviceId) {}

  void setErrorCallback(ERROR_CALLBACK callback, void* userData) {
    m_pfnErrorCallback = callback;
    m_pErrorCallbackUser = userData;
  }
  // Every error is kept and told here.
  void report(unsigned int slave, int errorCode);
  int lastError() const { return m_iLastError; }
  void resetError() { m_iLastError = 0; }

  // Also from another thread or a signal handler.
  void requestTerminate() { m_bRequestTerminate.store(true, std::memory_order_relaxed); }
  bool isRequestTerminate() const { return m_bRequestTerminate.load(std::memory_order_relaxed); }

  unsigned int alStates() const { return m_uiMasterState; }
  bool isExchanging() const {
    return m_uiMasterState == EC_AL_STATE_SAFEOP || m_uiMasterState == EC_AL_STATE_OP;
  }

  // Of a frame that was sent while isExchanging(); before, none comes back complete.
  void checkWorkingCounter(bool complete) {
    if (!complete) {
      report(ETHERCAT_ERROR_WHOLE_MASTER, ETHERCAT_ERROR_WORKING_COUNTER);
    }
  }
  void checkSlave(ec_master_t* master, ec_slave_config_t* config, unsigned int index) {
    ec_slave_config_state_t state{};
    static_cast<void>(ecrt_slave_config_state(config, &state));
    if (hasErrorFlag(state, master, static_cast<uint16_t>(index), 0)) {
      report(index, ETHERCAT_ERROR_SLAVE_STATE);
    }
  }
  void checkLink(ec_master_t* master);
  // Takes over the AL states, and compares the slaves with the scan when a rescan of the bus has just ended.
  void checkMaster(ec_master_t* master, unsigned long scannedSlaves);

  // The master was deactivated: nothing is known of the bus.
  void forgetStates() { m_uiMasterState = 0; }
  // The master was activated: no rescan is under way, and nobody wants an end any more.
  void restart() {
    m_bRequestTerminate.store(false, std::memory_order_relaxed);
    m_bScanBusy = false;
  }

private:
  unsigned int m_uiDeviceId;
  unsigned int m_uiMasterState = 0; // AL states of the previous cycle, ORed
  bool m_bScanBusy = false;
  int m_iLastError = 0;
  std::atomic<bool> m_bRequestTerminate{false};
  static_assert(std::atomic<bool>::is_always_lock_free); // or a signal handler could wait for itself
  ERROR_CALLBACK m_pfnErrorCallback = nullptr;
  void* m_pErrorCallbackUser = nullptr;
};

#endif
