#include "Application.h"

#include "commands/commands.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace igh_bus {
namespace {

// As a shell would take it.
std::string commandLine(int argc, char** argv) {
  std::string line;
  for (int i = 0; i < argc; ++i) {
    const std::string word = argv[i];
    const auto plain = [](unsigned char c) {
      return std::isalnum(c) != 0 || std::strchr("_-+=:.,/@%", c) != nullptr;
    };
    line += i == 0 ? "" : " ";
    if (!word.empty() && std::all_of(word.begin(), word.end(), plain)) {
      line += word;
      continue;
    }
    line += '\'';
    for (const char letter : word)
      line += letter == '\'' ? "'\\''" : std::string(1, letter);
    line += '\'';
  }
  return line;
}

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

// One that is closed would be taken by the next file that is opened, and the lines for people written into
// it. What is read only makes an output a failed one.
void keepStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0)
      static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
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
  addRunCommand(app, action, commandLine(argc, argv));
  addWatchCommand(app, action);
  addCheckCommand(app, action, commandLine(argc, argv));
  addDiagCommand(app, action);
  addSdoCommand(app, action);
  addRegCommand(app, action);
  addErrorsCommand(app, action);
  addStatesCommand(app, action);
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
  keepStandardStreams();
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
