#include <atomic>
#include <cstdlib>
#include <new>

namespace bench {

static std::atomic<std::size_t> count{0};

std::size_t allocations() {
  return count;
}

} // namespace bench

void* operator new(std::size_t size) {
  ++bench::count;
  if (void* memory = std::malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
