// What doctor looks at, by topic.
#ifndef IGH_BUS_CHECKS_H
#define IGH_BUS_CHECKS_H

#include "host/Doctor.h"

namespace igh_bus {

using Findings = std::vector<Finding>;

inline Finding good(const Topic& topic, const std::string& is) {
  return {Finding::ok, topic, is, ""};
}
inline Finding unseen(const Topic& topic, const std::string& is, const std::string& command = "") {
  return {Finding::unknown, topic, is, command};
}
inline Finding amiss(const Topic& topic, const std::string& is, const std::string& command) {
  return {Finding::warning, topic, is, command};
}
inline Finding broken(const Topic& topic, const std::string& is, const std::string& command) {
  return {Finding::failure, topic, is, command};
}

// Each adds to the findings.
void checkMaster(const Patient& patient, Findings& findings);
void checkKernel(const Machine& machine, Findings& findings);
void checkProcessors(const Machine& machine, Findings& findings);
void checkIdleStates(const Machine& machine, Findings& findings);
void checkMemory(const Machine& machine, Findings& findings);
void checkNetworkCard(const Patient& patient, Findings& findings);

} // namespace igh_bus

#endif
