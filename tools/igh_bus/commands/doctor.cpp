// igh_bus doctor: one line per check.
#include "host/Doctor.h"
#include "commands/commands.h"

#include <cstdio>
#include <memory>

namespace igh_bus {
namespace {

Status examine(unsigned int master) {
  static constexpr const char* WORDS[] = {"ok", "warning", "FAILURE"};
  bool failed = false;
  for (const Finding& finding : diagnose(collectFacts(master))) {
    failed = failed || finding.level == Finding::failure;
    std::printf("%-8s %-20s %s%s%s\n", WORDS[finding.level], finding.subject.c_str(), finding.text.c_str(),
                finding.remedy.empty() ? "" : "  -> ", finding.remedy.c_str());
  }
  return failed ? busError : success;
}

} // namespace

void addDoctorCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "doctor", "Check whether this machine is ready for a bus, with remedies");
  const auto master = std::make_shared<unsigned int>(0);
  command->add_option("--master", *master, "Index of the EtherCAT master (0)")->type_name("N");
  command->callback([master, &action] { action = [master] { return examine(*master); }; });
}

} // namespace igh_bus
