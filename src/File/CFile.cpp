#include "File/File.h"

CFile::CFile() : handle(file_object_create()) {}

CFile::~CFile() {
  file_object_destroy(handle);
}

bool CFile::open(const char* path, int mode) {
  return file_object_open(handle, path, mode);
}

void CFile::close() {
  file_object_close(handle);
}

unsigned long CFile::getLength() const {
  return file_object_get_length(handle);
}

int CFile::read(void* buffer, unsigned int count) {
  return file_object_read(handle, buffer, count);
}

int CFile::write(const void* buffer, unsigned int count) {
  return file_object_write(handle, buffer, count);
}
