// What a device file answers to ioctl.
#ifndef ETHERCAT_SIMULATION_DEVICE_REQUESTS_H
#define ETHERCAT_SIMULATION_DEVICE_REQUESTS_H

#include "master/Master.h"

namespace ethercat_simulation {

// 0 or a positive error number.
int serveRequest(Master& master, bool writable, unsigned long request, void* record);

} // namespace ethercat_simulation

#endif
