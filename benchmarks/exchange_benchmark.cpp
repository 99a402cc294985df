// One cycle through the library beside a hand-written loop over the same calls of the master, in one program.
//
// Both drive a bus of their own with the same slaves. The hand-written loop moves each entry with a plain
// load or store; `bare` makes the calls without moving anything. They take turns in short batches, and
// medians are compared, so that a drifting clock of the machine does not show.
#include "BenchBus.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ecrt.h>
#include <igh_master.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace bench_bus;
using Clock = std::chrono::steady_clock;

constexpr unsigned int LIBRARY_BUS = 0;
constexpr unsigned int HAND_BUS = 1;
constexpr unsigned int PERIOD_NS = 1000000;

// The library prints its listing while it scans; a benchmark's output is not the place for it.
template <class ACTION> void quietly(ACTION action) {
  std::fflush(stdout);
  const int kept = dup(STDOUT_FILENO);
  std::FILE* const null = std::fopen("/dev/null", "w");
  dup2(fileno(null), STDOUT_FILENO);
  action();
  std::fflush(stdout);
  dup2(kept, STDOUT_FILENO);
  close(kept);
  std::fclose(null);
}

class LibraryLoop {
public:
  LibraryLoop(unsigned int slaves, unsigned int entriesPerSlave, const std::string& description) {
    quietly([&] {
      igh_master_initialize_ex(LIBRARY_BUS, PERIOD_NS, false, false);
      igh_master_append_eni(LIBRARY_BUS, description.c_str());
      igh_master_scan(LIBRARY_BUS, nullptr);
    });
    igh_master_config_all_slave(LIBRARY_BUS);
    const unsigned int outputs = (entriesPerSlave + 1) / 2;
    for (unsigned int slave = 0; slave < slaves; ++slave) {
      for (unsigned int i = 0; i < entriesPerSlave; ++i) {
        const bool output = i < outputs;
        std::uint32_t handle = 0;
        igh_master_create_pdo_info(LIBRARY_BUS, slave, entryName(output, output ? i : i - outputs).c_str(),
                                   !output, &handle);
        m_handles.push_back(handle);
      }
    }
    igh_master_active(LIBRARY_BUS);
    std::uint32_t state = 0;
    for (int i = 0; i < 1000 && state != EC_AL_STATE_OP; ++i) {
      cycle();
      igh_master_get_state(LIBRARY_BUS, &state);
    }
    m_ready = state == EC_AL_STATE_OP;
  }
  ~LibraryLoop() {
    quietly([] { igh_master_uninitialize(LIBRARY_BUS); });
  }
  LibraryLoop(const LibraryLoop&) = delete;
  LibraryLoop& operator=(const LibraryLoop&) = delete;

  void cycle() { igh_master_exchange(LIBRARY_BUS, nullptr, nullptr); }
  bool ready() const { return m_ready; }
  const std::vector<std::uint32_t>& handles() const { return m_handles; }

private:
  std::vector<std::uint32_t> m_handles;
  bool m_ready = false;
};

class HandLoop {
public:
  HandLoop(unsigned int slaves, const std::vector<sim::SyncManager>& managers)
      : m_master(ecrt_request_master(HAND_BUS)) {
    m_domain = ecrt_master_create_domain(m_master);
    for (unsigned int position = 0; position < slaves; ++position) {
      m_configs.push_back(
          ecrt_master_slave_config(m_master, 0, static_cast<std::uint16_t>(position), VENDOR, PRODUCT));
      for (const sim::SyncManager& manager : managers) {
        registerEntries(static_cast<std::uint16_t>(position), manager);
      }
    }
    ecrt_master_activate(m_master);
    m_image = ecrt_domain_data(m_domain);
    ec_master_state_t state{};
    for (int i = 0; i < 1000 && state.al_states != EC_AL_STATE_OP; ++i) {
      cycle<true>();
      ecrt_master_state(m_master, &state);
    }
    m_ready = m_image != nullptr && state.al_states == EC_AL_STATE_OP;
  }
  ~HandLoop() { ecrt_release_master(m_master); }
  HandLoop(const HandLoop&) = delete;
  HandLoop& operator=(const HandLoop&) = delete;

  template <bool MOVE> void cycle() {
    ecrt_master_receive(m_master);
    ecrt_domain_process(m_domain);
    ec_domain_state_t domainState{};
    ecrt_domain_state(m_domain, &domainState);
    for (const ec_slave_config_t* config : m_configs) {
      ec_slave_config_state_t state{};
      ecrt_slave_config_state(config, &state);
      benchmark::DoNotOptimize(state);
    }
    ec_master_link_state_t link{};
    ecrt_master_link_state(m_master, 0, &link);
    ec_master_state_t state{};
    ecrt_master_state(m_master, &state);
    if (MOVE) {
      load(m_inputs8);
      load(m_inputs16);
      load(m_inputs32);
      benchmark::ClobberMemory();
      store(m_outputs8);
      store(m_outputs16);
      store(m_outputs32);
    }
    ecrt_domain_queue(m_domain);
    ecrt_master_send(m_master);
  }
  bool ready() const { return m_ready; }

private:
  template <class T> struct Place {
    unsigned int offset;
    T value;
  };

  void registerEntries(std::uint16_t position, const sim::SyncManager& manager) {
    for (const sim::Pdo& pdo : manager.pdos) {
      for (const sim::Entry& entry : pdo.entries) {
        unsigned int offset = 0;
        unsigned int bit = 0;
        const ec_pdo_entry_reg_t rows[] = {
            {0, position, VENDOR, PRODUCT, entry.index, entry.subindex, &offset, &bit}, {}};
        ecrt_domain_reg_pdo_entry_list(m_domain, rows);
        addPlace(manager.direction == sim::Direction::output, entry.bitLength, offset);
      }
    }
  }
  // One list per width, as a program written for this bus would know them.
  void addPlace(bool output, unsigned int bits, unsigned int offset) {
    if (bits == 8) {
      (output ? m_outputs8 : m_inputs8).push_back({offset, 0});
    } else if (bits == 16) {
      (output ? m_outputs16 : m_inputs16).push_back({offset, 0});
    } else {
      (output ? m_outputs32 : m_inputs32).push_back({offset, 0});
    }
  }
  template <class T> void load(std::vector<Place<T>>& places) const {
    for (Place<T>& place : places) {
      std::memcpy(&place.value, m_image + place.offset, sizeof(T));
    }
  }
  template <class T> void store(const std::vector<Place<T>>& places) const {
    for (const Place<T>& place : places) {
      std::memcpy(m_image + place.offset, &place.value, sizeof(T));
    }
  }

  ec_master_t* m_master;
  ec_domain_t* m_domain;
  std::uint8_t* m_image = nullptr;
  std::vector<ec_slave_config_t*> m_configs;
  std::vector<Place<std::uint8_t>> m_inputs8, m_outputs8;
  std::vector<Place<std::uint16_t>> m_inputs16, m_outputs16;
  std::vector<Place<std::uint32_t>> m_inputs32, m_outputs32;
  bool m_ready = false;
};

template <class CYCLE> double nanosecondsPerCycle(unsigned int cycles, CYCLE cycle) {
  const auto start = Clock::now();
  for (unsigned int i = 0; i < cycles; ++i) {
    cycle();
  }
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / cycles;
}

double median(std::vector<double>& values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

void exchangeBesideHandLoop(benchmark::State& state) {
  const auto slaves = static_cast<unsigned int>(state.range(0));
  const auto entries = static_cast<unsigned int>(state.range(1));
  const std::vector<sim::SyncManager> managers = layout(entries / slaves);
  const std::string description = "/tmp/exchange_benchmark_" + std::to_string(getpid()) + ".xml";
  writeDescription(description, managers);
  sim::reset();
  buildBus(LIBRARY_BUS, slaves, managers);
  buildBus(HAND_BUS, slaves, managers);

  LibraryLoop library(slaves, entries / slaves, description);
  HandLoop hand(slaves, managers);
  unlink(description.c_str());
  if (!library.ready() || !hand.ready()) {
    state.SkipWithError("the bus did not reach OP");
    return;
  }
  std::vector<double> libraryNs;
  std::vector<double> handNs;
  std::vector<double> bareNs;
  constexpr unsigned int BATCH = 200;
  while (state.KeepRunning()) {
    libraryNs.push_back(nanosecondsPerCycle(BATCH, [&] { library.cycle(); }));
    handNs.push_back(nanosecondsPerCycle(BATCH, [&] { hand.cycle<true>(); }));
    bareNs.push_back(nanosecondsPerCycle(BATCH, [&] { hand.cycle<false>(); }));
  }
  const double exchange = median(libraryNs);
  const double byHand = median(handNs);
  const double bare = median(bareNs);
  state.counters["exchange_ns"] = exchange;
  state.counters["hand_ns"] = byHand;
  state.counters["ratio"] = exchange / byHand;
  state.counters["own_ns"] = exchange - bare;
  state.counters["own_ns_per_entry"] = (exchange - bare) / entries;
}

void readAndWriteByHandle(benchmark::State& state) {
  const std::vector<sim::SyncManager> managers = layout(16);
  const std::string description = "/tmp/exchange_benchmark_" + std::to_string(getpid()) + ".xml";
  writeDescription(description, managers);
  sim::reset();
  buildBus(LIBRARY_BUS, 16, managers);
  LibraryLoop library(16, 16, description);
  unlink(description.c_str());
  const std::vector<std::uint32_t>& handles = library.handles();
  const bool read = state.range(0) != 0;
  size_t next = read ? 8 : 0; // of a slave's 16 entries the first half are outputs
  double value = 0;
  while (state.KeepRunning()) {
    if (read) {
      benchmark::DoNotOptimize(igh_master_pdo_recv(LIBRARY_BUS, handles[next], &value));
    } else {
      benchmark::DoNotOptimize(igh_master_pdo_send(LIBRARY_BUS, handles[next], value));
      value += 1;
    }
    next = (next & ~size_t{7}) + ((next + 1) & 7U);
  }
}

} // namespace

BENCHMARK(exchangeBesideHandLoop)
    ->ArgNames({"slaves", "entries"})
    ->Args({1, 16})
    ->Args({1, 256})
    ->Args({1, 4096})
    ->Args({16, 16})
    ->Args({16, 256})
    ->Args({16, 4096})
    ->Args({64, 64})
    ->Args({64, 256})
    ->Args({64, 4096})
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(readAndWriteByHandle)->ArgName("read")->Arg(1)->Arg(0);

BENCHMARK_MAIN();
