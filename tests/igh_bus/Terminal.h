// Programs and their terminals.
#pragma once

#include "Program.h"

#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <termios.h>
#include <utmp.h>

// Standard input of this process: nobody is there, or somebody at a terminal.
class Person {
public:
  Person() : m_kept(dup(STDIN_FILENO)), m_nobody(open("/dev/null", O_RDONLY)) {
    dup2(m_nobody, STDIN_FILENO);
  }
  ~Person() {
    dup2(m_kept, STDIN_FILENO);
    for (const int file : {m_kept, m_nobody, m_hands, m_terminal})
      close(file);
  }
  Person(const Person&) = delete;
  Person& operator=(const Person&) = delete;
  void types(const std::string& answer) {
    if (m_hands < 0) {
      EXPECT_EQ(openpty(&m_hands, &m_terminal, nullptr, nullptr, nullptr), 0);
      dup2(m_terminal, STDIN_FILENO);
    }
    EXPECT_EQ(write(m_hands, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
  }

private:
  int m_kept, m_nobody, m_hands = -1, m_terminal = -1;
};

// A program in a terminal of its own, and what it shows there.
class Terminal {
public:
  Terminal(const std::string& line, const std::string& type, unsigned short lines) {
    auto words = wordsOf(line);
    std::vector<char*> arguments;
    for (auto& word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    winsize size{lines, 100, 0, 0};
    int inside = -1;
    EXPECT_EQ(openpty(&m_terminal, &inside, nullptr, nullptr, &size), 0);
    tcgetattr(m_terminal, &m_modes); // before the program may change them
    m_child = fork();
    if (m_child == 0) {
      close(m_terminal);
      login_tty(inside);
      unsetenv("ETHERCAT_SIMULATION_BUS"); // of an earlier test
      setenv("TERM", type.c_str(), 1);
      execv(arguments[0], arguments.data());
      _exit(127);
    }
    close(inside);
  }
  ~Terminal() { close(m_terminal); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys) const {
    EXPECT_EQ(write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  void resize(unsigned short lines) const {
    const winsize size{lines, 100, 0, 0};
    ioctl(m_terminal, TIOCSWINSZ, &size);
  }
  // Has the screen drawn anew until it shows this, a minute long, and gives the text of that picture: a whole
  // one, in however many pieces it came.
  std::string until(const std::string& pattern) {
    std::string text;
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (std::chrono::steady_clock::now() < end) {
      type("\f");
      std::string shown;
      std::string part;
      do {
        part = read(300);
        shown += part;
        text = plain(lastPicture(shown));
      } while (text.empty() && !part.empty());
      if (std::regex_search(text, std::regex(pattern)))
        return text;
    }
    ADD_FAILURE() << "'" << pattern << "' is not in:\n" << text;
    return text;
  }
  // What came behind this call until the end, and the exit status.
  Outcome end() {
    Outcome outcome;
    for (std::string part; part = read(60000), !part.empty();)
      outcome.out += part;
    int status = 0;
    waitpid(m_child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    termios modes{};
    tcgetattr(m_terminal, &modes);
    m_restored = modes.c_lflag == m_modes.c_lflag && modes.c_iflag == m_modes.c_iflag;
    return outcome;
  }
  bool restored() const { return m_restored; }
  void signal(int number) const { kill(m_child, number); }

private:
  // Until nothing came for so long; at the end of the program nothing.
  std::string read(int quietMs) const {
    std::string text;
    pollfd wait{m_terminal, POLLIN, 0};
    char part[4096];
    while (poll(&wait, 1, text.empty() ? quietMs : 50) > 0) {
      const auto count = ::read(m_terminal, part, sizeof part);
      if (count <= 0)
        break;
      text.append(part, static_cast<std::size_t>(count));
    }
    return text;
  }
  // From the clearing of the screen to its last line, the one of the keys.
  static std::string lastPicture(const std::string& shown) {
    const auto end = shown.rfind("F10 Quit");
    std::size_t begin = std::string::npos;
    for (const char* const clear : {"\x1b[H\x1b[J", "\x1b[H\x1b[2J"}) {
      const auto found = shown.rfind(clear, end);
      begin = begin == std::string::npos || (found != std::string::npos && found > begin) ? found : begin;
    }
    const bool whole = end != std::string::npos && begin != std::string::npos;
    return whole ? shown.substr(begin, end - begin) : "";
  }
  static std::string plain(const std::string& text) {
    const auto placed = std::regex_replace(text, std::regex("\x1b\\[[0-9;]*H"), "\n");
    return std::regex_replace(placed, std::regex("\x1b[\\[(][0-9;?]*[A-Za-z]|[\x0e\x0f]"), "");
  }

  int m_terminal = -1;
  pid_t m_child = -1;
  termios m_modes{};
  bool m_restored = false;
};
