#include "DescriptionSupport.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/syscall.h>

using description_test::shortage;

description_test::Shortage description_test::shortage;

int fallocate(int fd, int mode, off_t offset, off_t length) {
  errno = ENOSPC;
  return shortage.disk ? -1 : static_cast<int>(syscall(SYS_fallocate, fd, mode, offset, length));
}

void* operator new(std::size_t size) {
  void* const memory = shortage.allocationsLeft == 0 ? nullptr : std::malloc(size);
  shortage.allocationsLeft -= shortage.allocationsLeft > 0 ? 1 : 0;
  return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
