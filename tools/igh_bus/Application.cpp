#include "Application.h"

#include "commands/commands.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace igh_bus {
namespace {

Status execute(int argc, char** argv) {
  CLI::App app("Device descriptions and buses of the IgH EtherCAT Master.", "igh_bus");
  app.require_subcommand(0, 1);
  app.footer(exitStatuses);
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
    std::string reason = error.what();
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    throw Failure(usageError, reason + " (try igh_bus --help)");
  }
  if (!action)
    throw Failure(usageError, "give a command, such as describe, scan or run (try igh_bus --help)");
  return action();
}

} // namespace

int program(int argc, char** argv) {
  try {
    return execute(argc, argv);
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
