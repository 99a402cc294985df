// igh_bus doctor: what is, what should be, and the command that makes it so.
#include "host/Doctor.h"
#include "arguments/CommandLine.h"
#include "commands/commands.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace igh_bus {
namespace {

struct DoctorArguments {
  unsigned int master = 0;
  std::string card;
  std::string root;
  bool json = false;
};

void printText(const std::vector<Finding>& findings) {
  static constexpr const char* WORDS[] = {"ok", "unknown", "warning", "FAILURE"};
  std::string former;
  for (const Finding& finding : findings) {
    std::printf("%-8s %-22s %s\n", WORDS[finding.level], finding.topic.subject, finding.is.c_str());
    if (finding.level >= Finding::warning)
      std::printf("           should be: %s\n", finding.topic.shouldBe);
    if (!finding.command.empty())
      std::printf("           do: %s\n", finding.command == former ? "the same" : finding.command.c_str());
    former = finding.command;
  }
  std::printf("\n%s\n", closingLine(findings).c_str());
}

void printJson(const std::vector<Finding>& findings) {
  static constexpr const char* WORDS[] = {"ok", "unknown", "warning", "failure"};
  const auto complaints = byWeight(findings);
  nlohmann::ordered_json data{{"ready", complaints.empty()}, {"summary", closingLine(findings)}};
  data["most_important"] = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < std::min<std::size_t>(complaints.size(), 3); ++i)
    data["most_important"].push_back(complaints[i].topic.id);
  data["findings"] = nlohmann::ordered_json::array();
  for (const Finding& finding : findings)
    data["findings"].push_back({{"id", finding.topic.id},
                                {"subject", finding.topic.subject},
                                {"level", WORDS[finding.level]},
                                {"is", finding.is},
                                {"should_be", finding.topic.shouldBe},
                                {"command", finding.command},
                                {"weight", finding.topic.weight}});
  std::printf("%s\n", data.dump(1).c_str());
}

Status examine(const DoctorArguments& arguments) {
  const Machine machine(arguments.root);
  const auto findings = diagnose({machine, thisBuild(), arguments.master, arguments.card});
  arguments.json ? printJson(findings) : printText(findings);
  const auto isFailure = [](const Finding& finding) { return finding.level == Finding::failure; };
  return std::any_of(findings.begin(), findings.end(), isFailure) ? busError : success;
}

} // namespace

void addDoctorCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "doctor", "Check whether this machine is ready for a bus, with remedies");
  const auto arguments = std::make_shared<DoctorArguments>();
  command->add_option("--master", arguments->master, "Index of the EtherCAT master (0)")
      ->check(wholeNumber(0, UINT16_MAX))
      ->type_name("N");
  command->add_option("--nic", arguments->card, "Network card to look at (that of the master)")
      ->type_name("NAME");
  command
      ->add_option("--root", arguments->root,
                   "Look at the copy of another machine's /proc, /sys, /dev, /etc and /run in this folder; "
                   "DIR/ethtool/NAME holds what ethtool -c NAME and ethtool -k NAME print there")
      ->check(CLI::ExistingDirectory)
      ->type_name("DIR");
  command->add_flag("--json", arguments->json, "Print the findings as one JSON object");
  command->callback([arguments, &action] { action = [arguments] { return examine(*arguments); }; });
}

} // namespace igh_bus
