// The calls on a master, as the simulation remembers them.
#ifndef ETHERCAT_SIMULATION_CALLS_H
#define ETHERCAT_SIMULATION_CALLS_H

#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace ethercat_simulation {

// Every call that can be traced or made to fail. Device calls are open, close and ioctl of /dev/EtherCAT<n>.
enum class Call {
  requestMaster,
  releaseMaster,
  openMaster,
  getSlave,
  getSyncManager,
  getPdo,
  getPdoEntry,
  slaveConfig,
  configPdos,
  configDc,
  configState,
  createDomain,
  regPdoEntryList,
  domainData,
  domainSize,
  domainProcess,
  domainQueue,
  domainState,
  activate,
  deactivate,
  receive,
  send,
  masterState,
  linkState,
  applicationTime,
  syncReferenceClock,
  syncSlaveClocks,
  referenceClockTime,
  selectReferenceClock,
  createSdoRequest,
  createSdoRequestComplete,
  sdoTimeout,
  sdoState,
  sdoRead,
  sdoWrite,
  sdoData,
  sdoDataSize,
  sdoUpload,
  sdoDownload,
  sdoDownloadComplete,
  deviceOpen,
  deviceClose,
  deviceIoctl,
  count
};

struct TraceEntry {
  Call call;
  // "ecrt_master_slave_config(0, 1, 0x00000002, 0x044C2C52) = 0:1": the name, the arguments without the
  // master (ids in hexadecimal, a slave configuration as alias:position), " = " and the result where there is
  // one.
  std::string text;
};

struct Misuse {
  std::uint64_t deadHandle = 0;    // a handle that deactivation or release has freed, or a null handle
  std::uint64_t foreignHandle = 0; // a handle of another master, one that was only opened where the call
                                   // needs the reservation, or no handle of this simulation at all
  std::uint64_t outOfOrder = 0;    // set-up call while active, cycle call while inactive, a
                                   // transfer started while the request is busy, an end
                                   // of the master while one is, and the like
  std::vector<std::string> lines;  // one sentence for each of the first 100
  std::uint64_t total() const { return deadHandle + foreignHandle + outOfOrder; }
};

} // namespace ethercat_simulation

#pragma GCC visibility pop

#endif
