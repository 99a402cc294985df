// Runs a program of this project and keeps what it printed and how it ended.
#pragma once

#include <chrono>
#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <thread>
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

// `signal`, when given, is sent once the program has printed "Period"; `bus` becomes ETHERCAT_SIMULATION_BUS.
inline Outcome runProgram(std::vector<std::string> command, int signal = 0, const std::string& bus = "") {
  const std::string out = scratch("out");
  const std::string err = scratch("err");
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> arguments;
    for (auto& word : command)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    bus.empty() ? unsetenv("ETHERCAT_SIMULATION_BUS") : setenv("ETHERCAT_SIMULATION_BUS", bus.c_str(), 1);
    if (!std::freopen(out.c_str(), "w", stdout) || !std::freopen(err.c_str(), "w", stderr))
      _exit(126);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  if (signal != 0) {
    for (int i = 0; i < 2000 && readFile(out).find("Period") == std::string::npos; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // well into the cycles
    kill(child, signal);
  }
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readFile(out), readFile(err)};
  std::remove(out.c_str());
  std::remove(err.c_str());
  return outcome;
}

inline Outcome ighBus(std::vector<std::string> arguments, int signal = 0) {
  arguments.insert(arguments.begin(), IGH_BUS_PROGRAM);
  return runProgram(std::move(arguments), signal);
}

inline std::string machine(const std::string& file) {
  return MACHINE_DIR + file;
}

// The command on all of the example machine's descriptions, with its bus file.
inline std::vector<std::string> onMachine(const std::string& command, const std::vector<std::string>& more) {
  std::vector<std::string> words{command, "--bus", machine("machine.json"), "--eni"};
  for (const char* file : {"coupler.xml", "terminals.xml", "modular_head.xml", "servo_drive.xml"})
    words.push_back(machine(file));
  words.insert(words.end(), more.begin(), more.end());
  return words;
}
