// The record of a bus: a CSV file with one row per cycle.
#ifndef ETHERCAT_SIMULATION_CYCLE_RECORD_H
#define ETHERCAT_SIMULATION_CYCLE_RECORD_H

#include "wire/Topology.h"

#include <cstdio>
#include <memory>
#include <string>

namespace ethercat_simulation {

class CycleRecord {
public:
  CycleRecord(const Topology& topology, const SimulatedTime& time) : m_topology(topology), m_time(time) {}
  ~CycleRecord() { end(); }
  CycleRecord(const CycleRecord&) = delete;
  CycleRecord& operator=(const CycleRecord&) = delete;

  // From the next cycle on; that opens the file, so that a look at the bus does not empty it. Without a path:
  // none. What has been recorded so far is closed.
  void begin(const std::string& path);
  // The end of a cycle.
  void take(std::uint64_t cycle) {
    if (!m_path.empty()) {
      write(cycle);
    }
  }
  // Hands the file to the system.
  void flush();

private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); } // flushed before
  };

  void write(std::uint64_t cycle);
  void open();
  void addSlave(const SlaveUnit& unit);
  void end();
  void check(bool done); // what fails is told once, and ends the record

  const Topology& m_topology;
  const SimulatedTime& m_time;
  std::string m_path; // empty: nothing to do
  std::unique_ptr<std::FILE, Close> m_file;
  std::string m_row;
  std::size_t m_slaves = 0; // columns are those of the first row
  Moment m_start = 0;
};

} // namespace ethercat_simulation

#endif
