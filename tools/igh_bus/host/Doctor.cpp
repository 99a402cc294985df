#include "host/Doctor.h"

#include "host/Checks.h"

#include <algorithm>
#include <ecrt.h>

namespace igh_bus {

Build thisBuild() {
  return {IGH_BUS_SIMULATED != 0, ECRT_VERSION_MAGIC, ecrt_version_magic()};
}

std::vector<Finding> diagnose(const Patient& patient) {
  Findings findings;
  checkMaster(patient, findings);
  checkNetworkCard(patient, findings);
  checkKernel(patient.machine, findings);
  checkProcessors(patient.machine, findings);
  checkIdleStates(patient.machine, findings);
  checkMemory(patient.machine, findings);
  return findings;
}

std::vector<Finding> byWeight(std::vector<Finding> findings) {
  const auto isNone = [](const Finding& finding) { return finding.level < Finding::warning; };
  findings.erase(std::remove_if(findings.begin(), findings.end(), isNone), findings.end());
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) { return a.topic.weight > b.topic.weight; });
  return findings;
}

std::string closingLine(const std::vector<Finding>& findings) {
  constexpr std::size_t MOST = 3;
  const auto complaints = byWeight(findings);
  if (complaints.empty()) {
    const auto unknown = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
      return finding.level == Finding::unknown;
    });
    return unknown == 0 ? "Ready."
                        : "Ready, as far as can be seen; unknown: " + std::to_string(unknown) + ".";
  }
  std::string text = "Not ready. ";
  text += complaints.size() > MOST ? "Of " + std::to_string(complaints.size()) + " things these matter most: "
                                   : "What is amiss: ";
  for (std::size_t i = 0; i < std::min(complaints.size(), MOST); ++i)
    text += (i == 0 ? "" : "; ") + std::string(complaints[i].topic.subject) + " (" + complaints[i].is + ")";
  return text + ".";
}

} // namespace igh_bus
