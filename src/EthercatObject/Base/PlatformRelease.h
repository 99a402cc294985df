// What the releases of the IgH master do not have in common. The patched 1.5.2 has all that the library asks
// for; what a stock release lacks is put in its place here, chosen by what its header declares. All other
// calls are the same, except that some are void in one release and return int in another: the library never
// looks at those results.
#ifndef ETHERCATOBJECT_PLATFORMRELEASE_H
#define ETHERCATOBJECT_PLATFORMRELEASE_H

#include <cstddef>
#include <cstdint>
#include <ecrt.h>

// Each pair: the first form where the header has the member or call, else the second. The last argument is 0
// and only makes the compiler prefer the first.

template <class STATE>
auto isScanBusy(const STATE& state, int /*preferred*/) -> decltype(state.scan_busy != 0) {
  return state.scan_busy != 0;
}
// Never an end of a rescan, and so never an error for added or lost slaves.
template <class STATE> bool isScanBusy(const STATE& /*state*/, long /*otherwise*/) {
  return false;
}

template <class STATE>
auto hasErrorFlag(const STATE& state, ec_master_t* /*master*/, uint16_t /*position*/, int /*preferred*/)
    -> decltype(state.error_flag != 0) {
  return state.error_flag != 0;
}
// One more call into the kernel for each slave and cycle.
template <class STATE>
bool hasErrorFlag(const STATE& /*state*/, ec_master_t* master, uint16_t position, long /*otherwise*/) {
  ec_slave_info_t info{};
  return ecrt_master_get_slave(master, position, &info) == 0 && info.error_flag != 0;
}

template <class CONFIG>
auto createCompleteSdoRequest(CONFIG* config, uint16_t index, size_t size, int /*preferred*/)
    -> decltype(ecrt_slave_config_create_sdo_request_complete(config, index, size)) {
  return ecrt_slave_config_create_sdo_request_complete(config, index, size);
}
template <class CONFIG>
ec_sdo_request_t* createCompleteSdoRequest(CONFIG* /*config*/, uint16_t /*index*/, size_t /*size*/,
                                           long /*otherwise*/) {
  return nullptr;
}

// The record of register requests on the device file. Stock 1.5.2 has no emergency byte, and the address in
// its place: with the other layout a write would clear registers that nobody asked for. Only that release
// lacks EC_HAVE_SYNC_TO.
#ifdef EC_HAVE_SYNC_TO
struct _REGISTER_REQUEST {
  unsigned short slavePosition;
  unsigned char emergency; // bypasses the slave list; always 0 here
  unsigned short address;
  unsigned long size;
  unsigned char* data;
};
static_assert(offsetof(_REGISTER_REQUEST, emergency) == 2 && offsetof(_REGISTER_REQUEST, address) == 4);
#else
struct _REGISTER_REQUEST {
  unsigned short slavePosition;
  unsigned short address;
  unsigned long size;
  unsigned char* data;
};
static_assert(offsetof(_REGISTER_REQUEST, address) == 2);
#endif
static_assert(sizeof(_REGISTER_REQUEST) == 24 && offsetof(_REGISTER_REQUEST, size) == 8 &&
              offsetof(_REGISTER_REQUEST, data) == 16);

#endif
