// The way of every function of ethercat_simulation.h: no exception leaves it, and what is refused says why.
#ifndef ETHERCAT_SIMULATION_FLAT_FACE_H
#define ETHERCAT_SIMULATION_FLAT_FACE_H

#include "base/Lock.h"

#include <ethercat_simulation.h>
#include <ethercat_simulation/Simulation.h>

#include <new>

namespace ethercat_simulation {

// Thrown and caught inside one function.
struct Refusal {
  std::string reason;
};

// Of this thread.
std::string& lastError();

// Checks and work are one step for other threads.
template <class Work> auto guarded(Work work) noexcept -> decltype(work()) {
  const Guard guard;
  lastError().clear();
  try {
    return work();
  } catch (Refusal& refusal) {
    lastError() = std::move(refusal.reason);
  } catch (const std::bad_alloc&) {
    lastError() = "out of memory"; // short enough to need none
  }
  return -1;
}

// For work without a result.
template <class Work> int done(Work work) noexcept {
  return guarded([&] {
    work();
    return 0;
  });
}

// All of these throw Refusal.
void expect(bool holds, const char* reason);
void expectNone(const std::string& problem);
const char* textOf(const char* text);
Bus& busOf(unsigned int master);
// The bus that has this slave.
Bus& slaveOf(unsigned int master, unsigned int position);
Call callOf(const char* name);

// Where an answer of `size` bytes goes.
void expectPlace(const void* destination, std::size_t size);
// As much as fits; gives the whole length.
int give(const std::vector<std::uint8_t>& bytes, std::uint8_t* destination, std::size_t size);
int give(const std::string& text, char* destination, std::size_t size);

} // namespace ethercat_simulation

#endif
