#include "Allocator.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <libxml/xmlmemory.h>
#include <link.h>
#include <new>
#include <unwind.h>
#include <utility>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OWN_MALLOC 0
#else
#define OWN_MALLOC 1
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}
#endif

namespace {

thread_local bool counting = false;
thread_local std::size_t allocations = 0;
std::size_t untilFailure = 0;
bool failed = false;
std::size_t out = 0;

struct Range {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

int findSimulation(dl_phdr_info* module, std::size_t /*size*/, void* found) {
  if (std::strstr(module->dlpi_name, "libethercat_simulation") == nullptr) {
    return 0;
  }
  auto& range = *static_cast<Range*>(found);
  range.begin = module->dlpi_addr;
  for (int i = 0; i < module->dlpi_phnum; ++i) {
    range.end = module->dlpi_addr + module->dlpi_phdr[i].p_vaddr + module->dlpi_phdr[i].p_memsz;
  }
  return 1;
}

_Unwind_Reason_Code look(_Unwind_Context* frame, void* range) {
  const std::uintptr_t address = _Unwind_GetIP(frame);
  auto& simulation = *static_cast<Range*>(range);
  if (address < simulation.begin || address >= simulation.end) {
    return _URC_NO_REASON;
  }
  simulation = {};
  return _URC_END_OF_STACK;
}

bool isInsideSimulation() {
  Range simulation;
  dl_iterate_phdr(findSimulation, &simulation);
  _Unwind_Backtrace(look, &simulation);
  return simulation.end == 0;
}

// Whether this allocation may succeed.
bool admit() {
  allocations += counting ? 1U : 0U;
  if (untilFailure == 0 || isInsideSimulation()) {
    return true;
  }
  failed = --untilFailure == 0;
  return !failed;
}

void* take(std::size_t size) {
#if OWN_MALLOC
  return admit() ? __libc_malloc(size) : nullptr;
#else
  return admit() ? std::malloc(size) : nullptr;
#endif
}

void* takePiece(std::size_t size) {
  void* const piece = take(size);
  out += piece != nullptr ? 1U : 0U;
  return piece;
}

void* resizePiece(void* piece, std::size_t size) {
#if OWN_MALLOC
  return piece == nullptr ? takePiece(size) : admit() ? __libc_realloc(piece, size) : nullptr;
#else
  return piece == nullptr ? takePiece(size) : admit() ? std::realloc(piece, size) : nullptr;
#endif
}

char* copyText(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* const copy = takePiece(size);
  return static_cast<char*>(copy == nullptr ? nullptr : std::memcpy(copy, text, size));
}

void givePiece(void* piece) {
  out -= piece != nullptr ? 1U : 0U;
  std::free(piece);
}

[[maybe_unused]] const int installed = xmlMemSetup(givePiece, takePiece, resizePiece, copyText);

} // namespace

namespace memory {

void count(bool on) {
  counting = on;
}
std::size_t counted() {
  return std::exchange(allocations, 0);
}
void failAt(std::size_t n) {
  failed = failed && n == 0;
  untilFailure = n;
}
bool hasFailed() {
  return failed;
}
std::size_t pieces() {
  return out;
}

} // namespace memory

void* operator new(std::size_t size) {
  if (void* const piece = takePiece(size)) {
    return piece;
  }
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return ::operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return takePiece(size);
}
void operator delete(void* piece) noexcept {
  givePiece(piece);
}
void operator delete(void* piece, std::size_t /*size*/) noexcept {
  givePiece(piece);
}
void operator delete[](void* piece) noexcept {
  givePiece(piece);
}
void operator delete[](void* piece, std::size_t /*size*/) noexcept {
  givePiece(piece);
}

#if OWN_MALLOC
// These stand before the C library's own for every library of the process.
#pragma GCC visibility push(default)
extern "C" {
void* malloc(std::size_t size) {
  return take(size);
}
void* calloc(std::size_t number, std::size_t size) {
  return admit() ? __libc_calloc(number, size) : nullptr;
}
void* realloc(void* memory, std::size_t size) {
  return admit() ? __libc_realloc(memory, size) : nullptr;
}
}
#pragma GCC visibility pop
#endif
