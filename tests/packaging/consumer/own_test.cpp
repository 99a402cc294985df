// The test of a user who has the packages: a bus of his own, the link lost, registers through the device
// file.
#include <ecrt.h> // of the simulation: comes with IghMaster::simulation alone
#include <ethercat_simulation/Simulation.h>
#include <igh_master.h>

#include <cstdio>

int main() {
  ethercat_simulation::Slave drive;
  drive.vendorId = 0x0B0B;
  drive.productCode = 0x500;
  ethercat_simulation::bus().setTiming(ethercat_simulation::Timing::fast);
  ethercat_simulation::bus().addSlave(drive);

  std::uint32_t slaves = 0;
  std::int32_t error = -1;
  std::uint8_t type = 0;
  const bool active = igh_master_initialize(0, 1000000, false) && igh_master_scan(0, &slaves) &&
                      igh_master_config_all_slave(0) && igh_master_active(0);
  igh_master_read_esc_reg(0, 0, 0x0000, &type, 1);
  ethercat_simulation::bus().setLinkUp(false);
  for (int cycle = 0; cycle < 100; ++cycle)
    igh_master_exchange(0, nullptr, nullptr);
  igh_master_get_last_error(0, &error);
  igh_master_uninitialize(0);
  std::printf("active %d, %u slave, type %u, error %d\n", active, slaves, type, error);
  const bool clean = ethercat_simulation::bus().misuse().total() == 0;
  return active && slaves == 1 && type != 0 && error == ETHERCAT_ERROR_LINK_DOWN && clean ? 0 : 1;
}
