// The allocator of a test program, for it and all its libraries: counts, and fails when told to.
#pragma once

#include <cstddef>

namespace memory {

// Allocations so far, and pieces that are out.
std::size_t allocations();
std::size_t pieces();

// The n-th allocation from now on fails, and no other; 0: none. Gives what was left of the last n: 0 says
// that it has failed. What the simulated master allocates does not count: the real one has its memory in the
// kernel.
std::size_t failAt(std::size_t n);

} // namespace memory
