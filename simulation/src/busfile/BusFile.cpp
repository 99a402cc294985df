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
                     "faults", "record"});
}

std::optional<std::chrono::microseconds> readTime(const JsonNode& node, const char* key) {
  if (!node.has(key)) {
    return std::nullopt;
  }
  return std::chrono::microseconds(node.get<std::int64_t>(key, 0, LONGEST_LATENCY));
}

std::string readRecord(const JsonNode& node) {
  std::string path = node.text();
  if (path.empty() || path.find('\0') != std::string::npos) {
    node.fail("must be the path of a file");
  }
  return path;
}

// Positions of faults count from the first of the slaves that are there already.
BusPlan readMaster(const JsonNode& node, std::vector<Slave> slaves = {}) {
  BusPlan plan;
  plan.place = node.place().empty() ? "/slaves" : node.place();
  if (node.has("timing")) {
    plan.timing = readTiming(node.at("timing"));
  }
  plan.cycleTime = readTime(node, "cycle_us");
  plan.climbCycles = node.get("climb_cycles", 1, MOST_CYCLES, plan.climbCycles);
  plan.scanCycles = node.get("scan_cycles", 1, MOST_CYCLES, plan.scanCycles);
  plan.sdoCycles = node.get("sdo_cycles", 1, MOST_CYCLES, plan.sdoCycles);
  plan.frameLatency = readTime(node, "frame_latency_us");
  if (node.has("reactivation_unmapped")) {
    plan.reactivationUnmapped = node.at("reactivation_unmapped").flag();
  }
  if (node.has("reference_clock")) {
    plan.referenceClock = readReferenceClock(node.at("reference_clock"));
  }
  if (node.has("slaves")) {
    plan.slaves = readSlaves(node.at("slaves"));
    slaves.insert(slaves.end(), plan.slaves.begin(), plan.slaves.end());
  }
  if (node.has("seed")) {
    plan.seed = node.get<std::uint32_t>("seed", 0, LIMIT32);
  }
  if (node.has("faults")) {
    plan.faults = readFaults(node.at("faults"), slaves);
  }
  if (node.has("record")) {
    plan.record = readRecord(node.at("record"));
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
  std::set<std::string> records;
  for (const JsonNode& element : root.at("masters").elements()) {
    expectMaster(element);
    const auto index = element.get<unsigned int>("index", 0, LIMIT16);
    if (!indexes.insert(index).second) {
      element.at("index").fail("another master has this index");
    }
    element.at("slaves");
    plans.push_back(readMaster(element));
    plans.back().index = index;
    if (plans.back().record && !records.insert(*plans.back().record).second) {
      element.at("record").fail("another master has this file");
    }
  }
  if (plans.empty()) {
    root.at("masters").fail("has no master");
  }
  return plans;
}

template <class Read> std::string problemOf(Read read) {
  try {
    read();
  } catch (const FileProblem& problem) {
    return (problem.place.empty() ? "" : problem.place + ": ") + problem.reason;
  }
  return {};
}

} // namespace

std::string readBusFile(const std::string& path, std::vector<BusPlan>& plans) {
  const std::string problem = problemOf([&] { plans = readMasters(JsonNode(loadJsonFile(path), "")); });
  return problem.empty() ? problem : path + ": " + problem;
}

std::string readBusText(const std::string& text, std::vector<BusPlan>& plans) {
  return problemOf([&] { plans = readMasters(JsonNode(parseJson(text), "")); });
}

std::string readBusPart(const std::string& text, const std::vector<Slave>& slaves, BusPlan& plan) {
  return problemOf([&] {
    const nlohmann::json document = parseJson(text);
    const JsonNode node(document, "");
    expectMaster(node);
    if (node.has("index")) {
      node.at("index").fail("unknown key");
    }
    plan = readMaster(node, slaves);
  });
}

std::string readSlaveText(const std::string& text, Slave& slave) {
  return problemOf([&] { slave = readSlave(JsonNode(parseJson(text), "")); });
}

void BusPlan::build(Master& master) const {
  if (timing) {
    master.setTiming(*timing);
  }
  if (cycleTime) {
    master.time().setCycle(std::chrono::nanoseconds(*cycleTime).count());
  }
  if (climbCycles > 0) {
    master.topology().setClimbCycles(climbCycles);
  }
  if (scanCycles > 0) {
    master.topology().setScanCycles(scanCycles);
  }
  if (sdoCycles > 0) {
    master.setSdoCycles(sdoCycles);
  }
  if (frameLatency) {
    master.traffic().setLatency(std::chrono::nanoseconds(*frameLatency).count());
  }
  if (reactivationUnmapped) {
    master.reservation().setReactivationUnmapped(*reactivationUnmapped);
  }
  if (referenceClock) {
    master.clock().runFree(*referenceClock);
  }
  for (const Slave& slave : slaves) {
    master.topology().append(slave);
  }
  if (seed) {
    master.schedule().setSeed(*seed);
  }
  for (const Fault& fault : faults) {
    master.schedule().add(fault);
  }
  if (record) {
    master.record().begin(*record);
  }
}

} // namespace ethercat_simulation
