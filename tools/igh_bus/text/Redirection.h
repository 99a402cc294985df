// Standard output or error led elsewhere for a while, also what the library prints there.
#ifndef IGH_BUS_REDIRECTION_H
#define IGH_BUS_REDIRECTION_H

#include <cstdio>
#include <optional>
#include <string>

namespace igh_bus {

class Redirection {
public:
  // Until the end of this object `stream` writes to the file descriptor `target`, which stays the caller's.
  Redirection(std::FILE* stream, int target);
  ~Redirection();
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

private:
  std::FILE* m_stream;
  int m_kept; // where the stream went before, -1 when nothing was changed
};

// Standard output as it is now, also while it is led elsewhere.
class KeptStdout {
public:
  KeptStdout();
  ~KeptStdout();
  KeptStdout(const KeptStdout&) = delete;
  KeptStdout& operator=(const KeptStdout&) = delete;
  // The whole text, past the buffer. Throws Failure(usageError) when it cannot be written.
  void write(const std::string& text) const;
  // As far as its file takes the text without a wait. What a pipe that nobody reads, or a stopped terminal,
  // has no room for is left out: what is told in passing must not hold anybody up.
  void writeInPassing(const std::string& text) const;

private:
  int m_file;
};

// Standard output goes nowhere while an object of this class lives.
class StdoutSilencer {
public:
  explicit StdoutSilencer(bool silent = true);

private:
  std::optional<Redirection> m_away;
};

// Keeps what is written to standard error from its construction until text() is called.
class StderrCapture {
public:
  StderrCapture();
  ~StderrCapture();
  StderrCapture(const StderrCapture&) = delete;
  StderrCapture& operator=(const StderrCapture&) = delete;
  // Ends the capture.
  std::string text();

private:
  int m_file;
  std::optional<Redirection> m_away;
};

} // namespace igh_bus

#endif
