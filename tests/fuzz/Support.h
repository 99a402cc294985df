// What the fuzzers share: their input as choices, a file that is memory only, and what must hold.
#ifndef TESTS_FUZZ_SUPPORT_H
#define TESTS_FUZZ_SUPPORT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#define REQUIRE(condition)                                                                                   \
  ((condition) ? void() : (std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition), std::abort()))

namespace fuzz {

// Takes choices from the front, so that an input can be cut and joined; behind its end every choice is the
// first one. The character '0' is the first choice too, '1' the second: seeds are written as text.
class Input {
public:
  Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

  bool empty() const { return m_next == m_end; }
  std::uint8_t byte() { return empty() ? std::uint8_t{'0'} : *m_next++; }
  unsigned int below(std::size_t limit) {
    return static_cast<unsigned int>(static_cast<std::uint8_t>(byte() - '0') % limit);
  }
  template <class Value, std::size_t count> Value any(const Value (&values)[count]) {
    return values[below(count)];
  }

private:
  const std::uint8_t* m_next;
  const std::uint8_t* m_end;
};

class MemoryFile {
public:
  void fill(const void* data, std::size_t size) {
    REQUIRE(ftruncate(m_file, 0) == 0 && pwrite(m_file, data, size, 0) == static_cast<ssize_t>(size));
  }
  const char* path() const { return m_path.c_str(); }

private:
  int m_file = memfd_create("fuzz", 0);
  std::string m_path = "/proc/self/fd/" + std::to_string(m_file);
};

} // namespace fuzz

#endif
