#include "busfile/BusFile.h"

#include "busfile/BusFileParts.h"
#include "master/Master.h"

#include <nlohmann/json.hpp>

#include <set>

namespace ethercat_simulation {

namespace {

constexpr std::uint64_t MOST_CYCLES = 1'000'000;
constexpr std::uint64_t LONGEST_LATENCY = 10'000'000; // microseconds
constexpr double FASTEST_DRIFT = 1000;                // ppm

ReferenceClock readReferenceClock(const JsonNode& node) {
  node.expectObject({"offset_ns", "drift_ppm", "jitter_ns", "seed"});
  ReferenceClock clock;
  if (node.has("offset_ns")) {
    clock.offsetNs = static_cast<std::int64_t>(node.at("offset_ns").real(-FARTHEST_CLOCK, FARTHEST_CLOCK));
  }
  if (node.has("drift_ppm")) {
    clock.driftPpm = node.at("drift_ppm").real(-FASTEST_DRIFT, FASTEST_DRIFT);
  }
  clock.jitterNs = node.get<std::uint32_t>("jitter_ns", 0, LIMIT32 >> 1, 0);
  clock.seed = node.get<std::uint32_t>("seed", 0, LIMIT32, clock.seed);
  return clock;
}

Timing readTiming(const JsonNode& node) {
  const std::string name = node.text();
  if (name != "real" && name != "fast") {
    node.fail("must be \"real\" or \"fast\"");
  }
  return name == "real" ? Timing::real : Timing::fast;
}

void expectMaster(const JsonNode& node) {
  node.expectObject({"index", "timing", "cycle_us", "climb_cycles", "scan_cycles", "sdo_cycles",
                     "frame_latency_us", "reactivation_unmapped", "reference_clock", "slaves", "seed",
                     "faults"});
}

BusPlan readMaster(const JsonNode& node) {
  BusPlan plan;
  plan.place = node.place().empty() ? "/slaves" : node.place();
  if (node.has("timing")) {
    plan.timing = readTiming(node.at("timing"));
  }
  plan.cycleTime = std::chrono::microseconds(node.get<std::int64_t>("cycle_us", 0, LONGEST_LATENCY, 0));
  plan.climbCycles = node.get("climb_cycles", 1, MOST_CYCLES, plan.climbCycles);
  plan.scanCycles = node.get("scan_cycles", 1, MOST_CYCLES, plan.scanCycles);
  plan.sdoCycles = node.get("sdo_cycles", 1, MOST_CYCLES, plan.sdoCycles);
  plan.frameLatency =
      std::chrono::microseconds(node.get<std::int64_t>("frame_latency_us", 0, LONGEST_LATENCY, 0));
  if (node.has("reactivation_unmapped")) {
    plan.reactivationUnmapped = node.at("reactivation_unmapped").flag();
  }
  if (node.has("reference_clock")) {
    plan.referenceClock = readReferenceClock(node.at("reference_clock"));
  }
  plan.slaves = readSlaves(node.at("slaves"));
  plan.seed = node.get<std::uint32_t>("seed", 0, LIMIT32, plan.seed);
  if (node.has("faults")) {
    plan.faults = readFaults(node.at("faults"), plan.slaves);
  }
  return plan;
}

std::vector<BusPlan> readMasters(const JsonNode& root) {
  if (!root.has("masters")) {
    expectMaster(root);
    if (root.has("index")) {
      root.at("index").fail("unknown key");
    }
    if (!root.has("slaves")) {
      root.fail("neither \"masters\" nor \"slaves\" is there");
    }
    return {readMaster(root)};
  }
  root.expectObject({"masters"}, "contradicts or is unknown beside \"masters\"");
  std::vector<BusPlan> plans;
  std::set<unsigned int> indexes;
  for (const JsonNode& element : root.at("masters").elements()) {
    expectMaster(element);
    const auto index = element.get<unsigned int>("index", 0, LIMIT16);
    if (!indexes.insert(index).second) {
      element.at("index").fail("another master has this index");
    }
    plans.push_back(readMaster(element));
    plans.back().index = index;
  }
  if (plans.empty()) {
    root.at("masters").fail("has no master");
  }
  return plans;
}

} // namespace

std::string readBusFile(const std::string& path, std::vector<BusPlan>& plans) {
  try {
    const nlohmann::json document = loadJsonFile(path);
    plans = readMasters(JsonNode(document, ""));
  } catch (const FileProblem& problem) {
    return path + ": " + (problem.place.empty() ? "" : problem.place + ": ") + problem.reason;
  }
  return {};
}

void BusPlan::build(Master& master) const {
  if (timing) {
    master.setTiming(*timing);
  }
  master.time().setCycle(std::chrono::nanoseconds(cycleTime).count());
  if (climbCycles > 0) {
    master.topology().setClimbCycles(climbCycles);
  }
  if (scanCycles > 0) {
    master.topology().setScanCycles(scanCycles);
  }
  if (sdoCycles > 0) {
    master.setSdoCycles(sdoCycles);
  }
  master.traffic().setLatency(std::chrono::nanoseconds(frameLatency).count());
  master.reservation().setReactivationUnmapped(reactivationUnmapped);
  if (referenceClock) {
    master.clock().runFree(*referenceClock);
  }
  for (const Slave& slave : slaves) {
    master.topology().append(slave);
  }
  master.schedule().setSeed(seed);
  for (const Fault& fault : faults) {
    master.schedule().add(fault);
  }
}

} // namespace ethercat_simulation
