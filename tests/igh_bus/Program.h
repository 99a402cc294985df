// Runs a program of this project and keeps what it printed and how it ended.
#pragma once

#include "Application.h"

#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct Outcome {
  int status = -1; // exit status, or minus the signal that ended it
  std::string out;
  std::string err;
};

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string scratch(const std::string& name, const std::string& text = "") {
  std::string path = testing::TempDir() + "igh_bus_" + std::to_string(getpid()) + "_" + name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

// As a shell takes them: a word 'in quotes' may have blanks. "@FILE" is a file of the example machine.
inline std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream stream(line);
  for (std::string word; stream >> std::quoted(word, '\'');)
    words.push_back(word[0] == '@' ? MACHINE_DIR + word.substr(1) : word);
  return words;
}

// For a command on all of the example machine's descriptions, with its bus file.
inline const std::string onMachine =
    " --bus @machine.json --eni @coupler.xml @terminals.xml @modular_head.xml @servo_drive.xml";

// `signal`, when given, is sent once the program has printed "Period"; `bus`, a file of the example machine,
// becomes ETHERCAT_SIMULATION_BUS.
inline Outcome runProgram(const std::string& line, int signal = 0, const std::string& bus = "") {
  const std::string out = scratch("out");
  const std::string err = scratch("err");
  const pid_t child = fork();
  if (child == 0) {
    auto words = wordsOf(line);
    std::vector<char*> arguments;
    for (auto& word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    bus.empty() ? unsetenv("ETHERCAT_SIMULATION_BUS")
                : setenv("ETHERCAT_SIMULATION_BUS", (MACHINE_DIR + bus).c_str(), 1);
    if (!std::freopen(out.c_str(), "w", stdout) || !std::freopen(err.c_str(), "w", stderr))
      _exit(126);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  if (signal != 0) {
    for (int i = 0; i < 2000 && readFile(out).find("Period") == std::string::npos; ++i)
      usleep(10000);
    usleep(200000); // well into the cycles
    kill(child, signal);
  }
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readFile(out), readFile(err)};
  std::remove(out.c_str());
  std::remove(err.c_str());
  return outcome;
}

inline Outcome ighBus(const std::string& line, int signal = 0) {
  return runProgram("'" IGH_BUS_PROGRAM "' " + line, signal);
}

// In this process, on a bus that the test has made.
inline Outcome runHere(const std::string& line) {
  auto words = wordsOf("igh_bus " + line);
  std::vector<char*> arguments;
  for (auto& word : words)
    arguments.push_back(word.data());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = igh_bus::program(static_cast<int>(arguments.size()), arguments.data());
  std::string err = testing::internal::GetCapturedStderr();
  return {status, testing::internal::GetCapturedStdout(), err};
}
