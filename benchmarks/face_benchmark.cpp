// One cycle through igh_master.hpp beside the same cycle through igh_master.h, in one program and on one bus.
//
// A cycle is an exchange whose callback reads every input and writes every output. The two take turns in
// short batches, and medians are compared, so that a drifting clock of the machine does not show.
#include "BenchBus.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <igh_master.hpp>
#include <unistd.h>
#include <vector>

namespace {

using namespace bench_bus;
using Clock = std::chrono::steady_clock;

constexpr std::uint16_t MASTER = 0;
constexpr std::chrono::milliseconds PERIOD(1);

struct Entries {
  std::vector<igh_master::Input<>> inputs;
  std::vector<igh_master::Output<>> outputs;
};

// The same handles, as numbers.
struct Handles {
  std::vector<std::uint32_t> inputs;
  std::vector<std::uint32_t> outputs;
};

bool bringUp(igh_master::Master& master, unsigned int entries, Entries& all, Handles& numbers) {
  const std::string description = "/tmp/face_benchmark_" + std::to_string(getpid()) + ".xml";
  writeDescription(description, layout(entries));
  const bool loaded = master.load(description);
  unlink(description.c_str());
  if (!loaded || !master.scan() || !master.configure()) {
    return false;
  }
  for (unsigned int i = 0; i < entries / 2; ++i) {
    auto input = master.input(0, entryName(false, i));
    auto output = master.output(0, entryName(true, i));
    if (!input || !output) {
      return false;
    }
    numbers.inputs.push_back(input->id());
    numbers.outputs.push_back(output->id());
    all.inputs.push_back(std::move(*input));
    all.outputs.push_back(std::move(*output));
  }
  if (!master.activate()) {
    return false;
  }
  for (int i = 0; i < 1000 && master.state() != igh_master::OP; ++i) {
    master.exchange();
  }
  return master.state() == igh_master::OP;
}

void cycleInCpp(igh_master::Master& master, Entries& entries) {
  master.exchange([&entries] {
    double sum = 0;
    for (const auto& input : entries.inputs) {
      sum += input.get();
    }
    for (auto& output : entries.outputs) {
      output.set(sum);
    }
  });
}

void cycleInC(Handles& handles) {
  igh_master_exchange(
      MASTER,
      [](void* data) {
        const auto& [inputs, outputs] = *static_cast<const Handles*>(data);
        double sum = 0;
        for (const std::uint32_t input : inputs) {
          double value = 0;
          igh_master_pdo_recv(MASTER, input, &value);
          sum += value;
        }
        for (const std::uint32_t output : outputs) {
          igh_master_pdo_send(MASTER, output, sum);
        }
      },
      &handles);
}

template <class CYCLE> double nanosecondsPerCycle(CYCLE cycle) {
  constexpr int BATCH = 200;
  const auto start = Clock::now();
  for (int i = 0; i < BATCH; ++i) {
    cycle();
  }
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / BATCH;
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void cppBesideC(benchmark::State& state) {
  const auto entries = static_cast<unsigned int>(state.range(0));
  sim::reset();
  buildBus(MASTER, 1, layout(entries));
  auto master = igh_master::Master::open(MASTER, PERIOD, {false, false, false});
  Entries all;
  Handles numbers;
  if (!master || !bringUp(*master, entries, all, numbers)) {
    state.SkipWithError("the bus did not reach OP");
    return;
  }
  std::vector<double> cppNs;
  std::vector<double> cNs;
  while (state.KeepRunning()) {
    cppNs.push_back(nanosecondsPerCycle([&] { cycleInCpp(*master, all); }));
    cNs.push_back(nanosecondsPerCycle([&] { cycleInC(numbers); }));
  }
  const double cpp = median(cppNs);
  const double c = median(cNs);
  state.counters["cpp_ns"] = cpp;
  state.counters["c_ns"] = c;
  state.counters["ratio"] = cpp / c;
}

} // namespace

BENCHMARK(cppBesideC)
    ->ArgName("entries")
    ->Arg(0)
    ->Arg(16)
    ->Arg(256)
    ->Arg(4096)
    ->Iterations(300)
    ->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
