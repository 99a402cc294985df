// File.h - a thin layer over POSIX file descriptors: free functions over a small handle, and CFile, which
// forwards to them. A handle belongs to one user at a time. No messages: failures are results, errno stays as
// the system call set it.
#ifndef FILE_FILE_H
#define FILE_FILE_H

// Open mode bits. Any mode that writes truncates, unless FILE_MODE_KEEP is set; no bit at all means read.
enum FILE_MODE {
  FILE_MODE_READ = 0x1,
  FILE_MODE_WRITE = 0x2,
  FILE_MODE_READ_WRITE = 0x4,
  FILE_MODE_CREATE = 0x8,
  FILE_MODE_KEEP = 0x10
};

class file_object_handle {
public:
  virtual ~file_object_handle() = default; // does not close the descriptor

  int fd = -1; // -1: closed
};

// Both hand out a handle that the caller gives back to file_object_destroy.
file_object_handle* file_object_create();
file_object_handle* file_object_attach(int fd);

// Closes, deletes and nulls the caller's pointer; a null pointer is ignored.
void file_object_destroy(file_object_handle*& handle);

// A file that is created gets permissions 0777 whatever the process's mask is. False for a null handle, a
// null path and a handle that is open already, which keeps its descriptor.
bool file_object_open(file_object_handle* handle, const char* path, int mode);
void file_object_close(file_object_handle* handle);

// Bytes; the position stays. 0 for a null handle, all bits set for a closed one.
unsigned long file_object_get_length(const file_object_handle* handle);

// The result of read(2) or write(2); 0 for a null handle, -1 for a closed one.
int file_object_read(file_object_handle* handle, void* buffer, unsigned int count);
int file_object_write(file_object_handle* handle, const void* buffer, unsigned int count);

// Owns one handle. Not to be deleted through a base: the destructor is deliberately not virtual.
class CFile {
public:
  CFile();
  ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  virtual bool open(const char* path, int mode);
  virtual void close();
  virtual unsigned long getLength() const;
  virtual int read(void* buffer, unsigned int count);
  virtual int write(const void* buffer, unsigned int count);

private:
  file_object_handle* handle;
};

#endif
