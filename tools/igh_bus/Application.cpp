#include "Application.h"

#include "commands/commands.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>

namespace igh_bus {
namespace {

// What was typed last of the commands: "igh_bus sdo read".
std::string typedCommand(const CLI::App& app) {
  std::string path = app.get_name();
  for (auto typed = app.get_subcommands(); !typed.empty(); typed = typed.back()->get_subcommands())
    path += " " + typed.back()->get_name();
  return path;
}

// What nobody knows is told before what is missing.
std::string refusal(const CLI::App& app, const CLI::ParseError& error) {
  const auto unknown = app.remaining(true);
  const auto option = std::find_if(unknown.begin(), unknown.end(),
                                   [](const std::string& word) { return word.rfind('-', 0) == 0; });
  std::string reason = error.what();
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  if (!unknown.empty() &&
      (dynamic_cast<const CLI::RequiredError*>(&error) || dynamic_cast<const CLI::ExtrasError*>(&error)))
    reason = (option == unknown.end() ? unknown.front() : *option) + " was not expected";
  return reason + " (try " + typedCommand(app) + " --help)";
}

// What is left in the buffers counts, too.
Status withOutput(Status status) {
  std::cout.flush();
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout)
    throw Failure(usageError, "standard output: not all of it could be written");
  return status;
}

Status execute(int argc, char** argv) {
  CLI::App app("Device descriptions and buses of the IgH EtherCAT Master.", "igh_bus");
  app.require_subcommand(0, 1);
  app.footer(exitStatuses);
  app.set_version_flag("--version", "igh_bus " IGH_BUS_VERSION);
  Action action;
  addDescribeCommand(app, action);
  addAdaptCommand(app, action);
  addScanCommand(app, action);
  addRunCommand(app, action);
  addDiagCommand(app, action);
  addSdoCommand(app, action);
  addRegCommand(app, action);
  addErrorsCommand(app, action);
  addDoctorCommand(app, action);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    app.exit(help);
    return success;
  } catch (const CLI::ParseError& error) {
    throw Failure(usageError, refusal(app, error));
  }
  if (!action)
    throw Failure(usageError, "give a command, such as describe, scan or run (try igh_bus --help)");
  return action();
}

} // namespace

int program(int argc, char** argv) {
  try {
    return withOutput(execute(argc, argv));
  } catch (const Failure& failure) {
    std::fflush(stdout);
    if (*failure.what() != '\0')
      std::fprintf(stderr, "igh_bus: %s\n", failure.what());
    return failure.status();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "igh_bus: %s\n", error.what());
    return notLoaded;
  }
}

} // namespace igh_bus
