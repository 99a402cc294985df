// The allocator of this program: counts, and fails when told to. It serves operator new and libxml2, and
// malloc too, unless a sanitizer has its own.
#pragma once

#include <cstddef>

namespace memory {

// Allocations of the calling thread are counted from count(true) to count(false). counted() starts afresh.
void count(bool on);
std::size_t counted();

// The n-th allocation from now on fails, and no other; 0: none. What the simulated master allocates does not
// count: the real one has its memory in the kernel.
void failAt(std::size_t n);
bool hasFailed();

// Pieces that operator new and libxml2 have out.
std::size_t pieces();

} // namespace memory
