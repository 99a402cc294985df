#include "Allocator.h"

#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <new>
#include <utility>

// What this program's malloc stands before. A sanitizer's operator new does without malloc, so that one is
// here too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif
// A sanitizer allocates before it is ready for checks.
#define EARLY __attribute__((no_sanitize("address", "undefined", "thread")))
#define OWN extern "C" EARLY __attribute__((visibility("default")))

extern "C" void* REAL(malloc)(std::size_t size);
extern "C" void* REAL(calloc)(std::size_t number, std::size_t size);
extern "C" void* REAL(realloc)(void* piece, std::size_t size);
extern "C" void REAL(free)(void* piece);

namespace {

std::size_t asked = 0;
std::size_t out = 0;
std::size_t untilFailure = 0;

bool isInsideSimulation() {
  std::array<void*, 64> frames{};
  backtrace(frames.data(), static_cast<int>(frames.size()));
  for (void* const frame : frames) {
    dl_find_object module{};
    if (_dl_find_object(frame, &module) == 0 &&
        std::strstr(module.dlfo_link_map->l_name, "libethercat_simulation") != nullptr) {
      return true;
    }
  }
  return false;
}

// The first look allocates.
[[maybe_unused]] const bool isReady = !isInsideSimulation();

// Whether this allocation may succeed.
EARLY bool admit() {
  ++asked;
  return untilFailure == 0 || isInsideSimulation() || --untilFailure != 0;
}

EARLY void* counted(void* piece) {
  out += piece != nullptr ? 1U : 0U;
  return piece;
}

} // namespace

std::size_t memory::allocations() {
  return asked;
}
std::size_t memory::pieces() {
  return out;
}
std::size_t memory::failAt(std::size_t n) {
  return std::exchange(untilFailure, n);
}

// What the loader keeps is taken for a leak, since it comes from here.
OWN const char* __lsan_default_suppressions() {
  return "leak:_dl_map_object_deps";
}

OWN void* malloc(std::size_t size) {
  return admit() ? counted(REAL(malloc)(size)) : nullptr;
}
OWN void* calloc(std::size_t number, std::size_t size) {
  return admit() ? counted(REAL(calloc)(number, size)) : nullptr;
}
OWN void* realloc(void* piece, std::size_t size) {
  return piece == nullptr ? malloc(size) : admit() ? REAL(realloc)(piece, size) : nullptr;
}
OWN void free(void* piece) {
  out -= piece != nullptr ? 1U : 0U;
  REAL(free)(piece);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return malloc(size);
}
void* operator new(std::size_t size) {
  void* const piece = malloc(size);
  return piece != nullptr ? piece : throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return ::operator new(size);
}
void operator delete(void* piece) noexcept {
  free(piece);
}
void operator delete(void* piece, std::size_t /*size*/) noexcept {
  free(piece);
}
void operator delete[](void* piece) noexcept {
  free(piece);
}
void operator delete[](void* piece, std::size_t /*size*/) noexcept {
  free(piece);
}
