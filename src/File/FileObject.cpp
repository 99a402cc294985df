#include "File/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int openFlags(int mode) {
  const bool read = (mode & FILE_MODE_READ) != 0;
  const bool write = (mode & FILE_MODE_WRITE) != 0;
  const bool readWrite = (mode & FILE_MODE_READ_WRITE) != 0 || (read && write);

  int flags = O_RDONLY;
  if (readWrite) {
    flags = O_RDWR;
  } else if (write) {
    flags = O_WRONLY;
  }
  if (flags != O_RDONLY && (mode & FILE_MODE_KEEP) == 0) {
    flags |= O_TRUNC;
  }
  if ((mode & FILE_MODE_CREATE) != 0) {
    flags |= O_CREAT;
  }
  return flags;
}

} // namespace

file_object_handle* file_object_create() {
  return new file_object_handle;
}

file_object_handle* file_object_attach(int fd) {
  auto* handle = file_object_create();
  handle->fd = fd;
  return handle;
}

void file_object_destroy(file_object_handle*& handle) {
  if (handle == nullptr) {
    return;
  }
  file_object_close(handle);
  delete handle;
  handle = nullptr;
}

bool file_object_open(file_object_handle* handle, const char* path, int mode) {
  if (handle == nullptr || handle->fd != -1 || path == nullptr) {
    return false;
  }
  constexpr mode_t EVERYONE = 0777;
  const mode_t mask = umask(0);
  handle->fd = ::open(path, openFlags(mode), EVERYONE);
  umask(mask);
  return handle->fd != -1;
}

void file_object_close(file_object_handle* handle) {
  if (handle == nullptr || handle->fd == -1) {
    return;
  }
  ::close(handle->fd);
  handle->fd = -1;
}

unsigned long file_object_get_length(const file_object_handle* handle) {
  if (handle == nullptr) {
    return 0;
  }
  if (handle->fd == -1) {
    return static_cast<unsigned long>(-1);
  }
  const off_t position = lseek(handle->fd, 0, SEEK_CUR);
  const off_t length = lseek(handle->fd, 0, SEEK_END);
  lseek(handle->fd, position, SEEK_SET);
  return static_cast<unsigned long>(length);
}

int file_object_read(file_object_handle* handle, void* buffer, unsigned int count) {
  if (handle == nullptr) {
    return 0;
  }
  return handle->fd == -1 ? -1 : static_cast<int>(::read(handle->fd, buffer, count));
}

int file_object_write(file_object_handle* handle, const void* buffer, unsigned int count) {
  if (handle == nullptr) {
    return 0;
  }
  return handle->fd == -1 ? -1 : static_cast<int>(::write(handle->fd, buffer, count));
}
