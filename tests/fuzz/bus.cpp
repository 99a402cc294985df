// The input as a bus file: its masters are requested, configured, cycled and released.
#include "Support.h"

#include <ecrt.h>
#include <ethercat_simulation/Simulation.h>

#include <algorithm>

namespace {

namespace sim = ethercat_simulation;

constexpr std::uint16_t masters = 3; // of those that a file may have
constexpr int cycles = 120;
constexpr std::uint16_t mostSlaves = 16;
constexpr std::uint16_t objects[] = {0x6000, 0x7000, 0x6040, 0x6041, 0x607A, 0x6064, 0x2000};

ec_sdo_request_t* configure(ec_master_t* master, ec_domain_t* domain, std::uint16_t position) {
  ec_slave_info_t info{};
  REQUIRE(ecrt_master_get_slave(master, position, &info) == 0);
  ec_slave_config_t* const slave =
      ecrt_master_slave_config(master, 0, position, info.vendor_id, info.product_code);
  REQUIRE(slave != nullptr);
  unsigned int offset = 0;
  unsigned int bit = 0;
  for (const std::uint16_t index : objects) {
    for (std::uint8_t subindex = 0; subindex < 3; ++subindex) {
      const ec_pdo_entry_reg_t rows[] = {
          {0, position, info.vendor_id, info.product_code, index, subindex, &offset, &bit}, {}};
      ecrt_domain_reg_pdo_entry_list(domain, rows);
    }
  }
  ecrt_slave_config_dc(slave, 0x300, 1000000, 0, 0, 0);
  return ecrt_slave_config_create_sdo_request(slave, objects[position % std::size(objects)], 0, 4);
}

void serve(ec_sdo_request_t* request, int cycle) {
  if (ecrt_sdo_request_state(request) != EC_REQUEST_BUSY) {
    cycle % 2 == 0 ? ecrt_sdo_request_read(request) : ecrt_sdo_request_write(request);
  }
}

void run(ec_master_t* master, std::uint16_t slaves) {
  ec_domain_t* const domain = ecrt_master_create_domain(master);
  std::vector<ec_sdo_request_t*> requests;
  for (std::uint16_t position = 0; position < slaves; ++position) {
    requests.push_back(configure(master, domain, position));
  }
  const std::size_t size = ecrt_domain_size(domain);
  REQUIRE(ecrt_master_activate(master) == 0);
  std::uint8_t* const image = ecrt_domain_data(domain);
  for (int cycle = 0; cycle < cycles; ++cycle) {
    ecrt_master_receive(master);
    ecrt_domain_process(domain);
    std::for_each(image, image + (image != nullptr ? size : 0), [](std::uint8_t& byte) { ++byte; });
    std::for_each(requests.begin(), requests.end(), [cycle](auto* request) { serve(request, cycle); });
    ecrt_domain_queue(domain);
    ecrt_master_application_time(master, 1000000 * (static_cast<std::uint64_t>(cycle) + 1));
    ecrt_master_sync_reference_clock(master);
    ecrt_master_sync_slave_clocks(master);
    ecrt_master_send(master);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  file.fill(data, size);
  sim::reset();
  const std::string problem = sim::loadBusFile(file.path());
  REQUIRE(problem.find('\n') == std::string::npos);
  for (std::uint16_t index = 0; index < masters && problem.empty(); ++index) {
    sim::Bus& bus = sim::bus(index);
    bus.setCycleTime(std::chrono::milliseconds(10)); // the cycles pass all states of the real timing
    ec_master_t* const master = ecrt_request_master(index);
    run(master, static_cast<std::uint16_t>(std::min<std::size_t>(bus.slaveCount(), mostSlaves)));
    for (unsigned int position = 0; position < bus.slaveCount() && position < mostSlaves; ++position) {
      bus.registers(position, 0x0130, 6);
    }
    ecrt_release_master(master);
    REQUIRE(bus.misuse().deadHandle == 0 && bus.misuse().foreignHandle == 0); // a transfer is often busy
  }
  return 0;
}
