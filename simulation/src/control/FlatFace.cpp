#include "control/FlatFace.h"

#include "master/Recorder.h"

#include <algorithm>
#include <cstring>

namespace ethercat_simulation {

std::string& lastError() {
  static thread_local std::string text;
  return text;
}

void expect(bool holds, const char* reason) {
  if (!holds) {
    throw Refusal{reason};
  }
}

void expectNone(const std::string& problem) {
  if (!problem.empty()) {
    throw Refusal{problem};
  }
}

const char* textOf(const char* text) {
  expect(text != nullptr, "a text is missing");
  return text;
}

Bus& busOf(unsigned int master) {
  constexpr unsigned int LAST_MASTER = 0xFFFF;
  expect(master <= LAST_MASTER, "the index of a master is at most 65535");
  return bus(master);
}

Bus& slaveOf(unsigned int master, unsigned int position) {
  Bus& found = busOf(master);
  if (position >= found.slaveCount()) {
    throw Refusal{"master " + std::to_string(master) + " has no slave " + std::to_string(position) +
                  ", it has " + std::to_string(found.slaveCount())};
  }
  return found;
}

Call callOf(const char* name) {
  for (std::size_t call = 0; call < CALL_KINDS; ++call) {
    if (std::strcmp(textOf(name), callName(static_cast<Call>(call))) == 0) {
      return static_cast<Call>(call);
    }
  }
  throw Refusal{std::string("there is no call ") + name};
}

void expectPlace(const void* destination, std::size_t size) {
  expect(destination != nullptr || size == 0, "the place for the answer is missing");
}

int give(const std::vector<std::uint8_t>& bytes, std::uint8_t* destination, std::size_t size) {
  expectPlace(destination, size);
  std::copy_n(bytes.begin(), std::min(bytes.size(), size), destination);
  return static_cast<int>(bytes.size());
}

int give(const std::string& text, char* destination, std::size_t size) {
  expectPlace(destination, size);
  if (size > 0) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(destination, text.data(), length);
    destination[length] = '\0';
  }
  return static_cast<int>(text.size());
}

} // namespace ethercat_simulation
