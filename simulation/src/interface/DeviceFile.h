// The masters' character devices, /dev/EtherCAT<n>.
#ifndef ETHERCAT_SIMULATION_DEVICE_FILE_H
#define ETHERCAT_SIMULATION_DEVICE_FILE_H

namespace ethercat_simulation {

class Master;

// Both are for who holds the lock.
int openDeviceFiles(const Master& master);
// The masters are about to go: open device files stay open, with nothing behind them.
void orphanDeviceFiles();

} // namespace ethercat_simulation

#endif
