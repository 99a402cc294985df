// The slaves that the benchmarks drive, as a simulated bus and as a description file from one source.
#ifndef BENCHMARKS_BENCHBUS_H
#define BENCHMARKS_BENCHBUS_H

#include <cstdint>
#include <ethercat_simulation/Simulation.h>
#include <string>
#include <vector>

namespace bench_bus {

namespace sim = ethercat_simulation;

constexpr std::uint32_t VENDOR = 0x00000B0B;
constexpr std::uint32_t PRODUCT = 0x00000001;

// Sync managers of a slave with this many entries: half of them outputs, half inputs, widths of 1, 2 and 4
// bytes taking turns.
std::vector<sim::SyncManager> layout(unsigned int entries);
std::string entryName(bool output, unsigned int entry);
void writeDescription(const std::string& path, const std::vector<sim::SyncManager>& managers);
void buildBus(unsigned int index, unsigned int slaves, const std::vector<sim::SyncManager>& managers);

} // namespace bench_bus

#endif
