// The fault schedule of a bus file.
#include "busfile/BusFileParts.h"
#include "drive/DriveObjects.h"
#include "faults/FaultSchedule.h"

#include <algorithm>

namespace ethercat_simulation {

namespace {

constexpr std::uint64_t LAST_CYCLE = 1'000'000'000'000;

struct KindRow {
  std::string_view name;
  FaultKind kind;
  std::vector<const char*> keys; // beside those of every fault
  DriveTrouble trouble = DriveTrouble::fault;
};

const std::vector<KindRow>& kinds() {
  static const std::vector<KindRow> rows{
      {"lost_frame", FaultKind::lostFrame, {}},
      {"late_frame", FaultKind::lateFrame, {}},
      {"silent_slave", FaultKind::silentSlave, {"slave"}},
      {"link_down", FaultKind::linkDown, {}},
      {"wire_break", FaultKind::wireBreak, {"slave"}},
      {"power_off", FaultKind::powerOff, {"slave"}},
      {"al_error", FaultKind::alError, {"slave", "al_state", "code"}},
      {"sdo_abort", FaultKind::sdoAbort, {"slave", "index", "subindex"}},
      {"sdo_silence", FaultKind::sdoSilence, {"slave", "index", "subindex"}},
      {"error_counter", FaultKind::errorCounter, {"slave", "register"}},
      {"clock_step", FaultKind::clockStep, {"step_ns"}},
      {"drive_fault", FaultKind::driveTrouble, {"slave", "error_code"}},
      {"blocked_axis", FaultKind::driveTrouble, {"slave"}, DriveTrouble::blockedAxis},
      {"positive_limit", FaultKind::driveTrouble, {"slave"}, DriveTrouble::positiveLimit},
      {"negative_limit", FaultKind::driveTrouble, {"slave"}, DriveTrouble::negativeLimit},
      {"quick_stop", FaultKind::driveTrouble, {"slave"}, DriveTrouble::quickStop},
      {"safe_torque_off", FaultKind::driveTrouble, {"slave"}, DriveTrouble::safeTorqueOff},
  };
  return rows;
}

const KindRow& readKind(const JsonNode& node) {
  const std::string name = node.text();
  std::string known;
  for (const KindRow& row : kinds()) {
    if (row.name == name) {
      return row;
    }
    known += (known.empty() ? "" : ", ") + std::string(row.name);
  }
  node.fail("must be one of " + known);
}

void checkKeys(const JsonNode& node, const KindRow& row) {
  node.expectObject({"kind", "at", "every", "probability", "for", "across_activations", "slave", "index",
                     "subindex", "al_state", "code", "register", "step_ns", "error_code"});
  for (const char* key :
       {"slave", "index", "subindex", "al_state", "code", "register", "step_ns", "error_code"}) {
    const bool belongs = std::any_of(row.keys.begin(), row.keys.end(),
                                     [&](const char* allowed) { return std::string_view(allowed) == key; });
    if (node.has(key) && !belongs) {
      node.at(key).fail("does not belong to \"" + std::string(row.name) + "\"");
    }
  }
}

void readBeginning(const JsonNode& node, Fault& fault) {
  const int given =
      (node.has("at") ? 1 : 0) + (node.has("every") ? 1 : 0) + (node.has("probability") ? 1 : 0);
  if (given != 1) {
    node.fail("must have one of \"at\", \"every\" and \"probability\"");
  }
  fault.at = node.get<std::uint64_t>("at", 1, LAST_CYCLE, 0);
  fault.every = node.get<std::uint64_t>("every", 1, LAST_CYCLE, 0);
  if (node.has("probability")) {
    fault.probability = node.at("probability").real(1e-12, 1);
  }
  fault.duration = node.get<std::uint32_t>("for", 1, LIMIT32, fault.duration);
}

void readSlave(const JsonNode& node, const std::vector<Slave>& slaves, Fault& fault) {
  fault.slave = node.get<unsigned int>("slave", 0, LIMIT16);
  if (fault.slave >= slaves.size()) {
    node.at("slave").fail("there is no slave at this position");
  }
}

bool hasObject(const Slave& slave, std::uint16_t index, std::uint8_t subindex) {
  const bool listed = std::any_of(slave.objects.begin(), slave.objects.end(), [&](const Object& object) {
    return object.index == index && object.subindex == subindex;
  });
  return listed || (slave.model == SlaveModel::drive && driveObjectSize(index, subindex) != 0);
}

void readObjectOf(const JsonNode& node, const Slave& slave, Fault& fault) {
  fault.index = node.get<std::uint16_t>("index", 0, LIMIT16);
  fault.subindex = node.get<std::uint8_t>("subindex", 0, LIMIT8, 0);
  if (!hasObject(slave, fault.index, fault.subindex)) {
    node.at("index").fail("the slave has no such object");
  }
}

std::uint8_t readAlState(const JsonNode& node) {
  const std::string name = node.text();
  if (name != "INIT" && name != "PREOP" && name != "SAFEOP") {
    node.fail("must be \"INIT\", \"PREOP\" or \"SAFEOP\"");
  }
  return name == "INIT" ? 1 : name == "PREOP" ? 2 : 4;
}

Fault readFault(const JsonNode& node, const std::vector<Slave>& slaves) {
  const KindRow& row = readKind(node.at("kind"));
  checkKeys(node, row);
  Fault fault;
  fault.kind = row.kind;
  fault.trouble = row.trouble;
  readBeginning(node, fault);
  if (needsSlave(fault.kind)) {
    readSlave(node, slaves, fault);
  }
  if (needsObject(fault.kind)) {
    readObjectOf(node, slaves[fault.slave], fault);
  }
  if (needsDrive(fault.kind) && slaves[fault.slave].model != SlaveModel::drive) {
    node.at("slave").fail("the slave is no drive");
  }
  fault.errorCode = node.get<std::uint16_t>("error_code", 1, LIMIT16, fault.errorCode);
  if (node.has("al_state")) {
    fault.alState = readAlState(node.at("al_state"));
  }
  fault.acrossActivations = node.has("across_activations") && node.at("across_activations").flag();
  fault.alCode = node.get<std::uint16_t>("code", 1, LIMIT16, fault.alCode);
  fault.counter = node.get<std::uint16_t>("register", FIRST_ERROR_COUNTER, LAST_ERROR_COUNTER, fault.counter);
  if (fault.kind == FaultKind::clockStep) {
    fault.stepNs = static_cast<std::int64_t>(node.at("step_ns").real(-FARTHEST_CLOCK, FARTHEST_CLOCK));
  }
  return fault;
}

} // namespace

std::vector<Fault> readFaults(const JsonNode& node, const std::vector<Slave>& slaves) {
  std::vector<Fault> faults;
  for (const JsonNode& element : node.elements()) {
    faults.push_back(readFault(element, slaves));
  }
  return faults;
}

} // namespace ethercat_simulation
