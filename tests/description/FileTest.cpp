#include "File/File.h"
#include "DescriptionSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using description_test::TemporaryFile;

TEST(File, ModeBitsChooseAccessTruncationAndCreation) {
  struct Case {
    int mode;
    int access;
    bool truncates;
  };
  for (Case const& expected :
       {Case{0, O_RDONLY, false}, Case{1, O_RDONLY, false}, Case{9, O_RDONLY, false}, Case{2, O_WRONLY, true},
        Case{2 | 16, O_WRONLY, false}, Case{3, O_RDWR, true}, Case{4, O_RDWR, true},
        Case{5 | 16, O_RDWR, false}, Case{12, O_RDWR, true}, Case{28, O_RDWR, false}}) {
    SCOPED_TRACE(expected.mode);
    TemporaryFile const file("content");
    file_object_handle* handle = file_object_create();
    ASSERT_TRUE(file_object_open(handle, file.path(), expected.mode));
    EXPECT_EQ(fcntl(handle->fd, F_GETFL) & O_ACCMODE, expected.access);
    EXPECT_EQ(file_object_get_length(handle), expected.truncates ? 0U : 7U);
    file_object_destroy(handle);
    EXPECT_EQ(handle, nullptr);

    unlink(file.path());
    CFile created;
    mode_t const mask = umask(027);
    EXPECT_EQ(created.open(file.path(), expected.mode), (expected.mode & 8) != 0);
    EXPECT_EQ(umask(mask), 027U) << "the process's mask must come back";
    struct stat status {};
    if ((expected.mode & 8) != 0 && stat(file.path(), &status) == 0) {
      EXPECT_EQ(status.st_mode & 07777U, 0777U);
    }
  }
}

TEST(File, AnOpenHandleRefusesASecondOpenAndTheLengthLeavesThePosition) {
  TemporaryFile const file("content");
  file_object_handle* handle = file_object_create();
  char text[8] = {};
  EXPECT_EQ(file_object_read(handle, text, 4), -1);
  EXPECT_EQ(file_object_get_length(handle), ~0UL);
  ASSERT_TRUE(file_object_open(handle, file.path(), 28));
  int const descriptor = handle->fd;
  EXPECT_FALSE(file_object_open(handle, file.path(), 1));
  EXPECT_EQ(handle->fd, descriptor);
  EXPECT_EQ(file_object_read(handle, text, 3), 3);
  EXPECT_EQ(file_object_get_length(handle), 7U);
  EXPECT_EQ(file_object_read(handle, text, 8), 4);
  EXPECT_STREQ(text, "tent");
  EXPECT_EQ(file_object_write(handle, "s", 1), 1);
  file_object_destroy(handle);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1) << "destroying closes";
  EXPECT_EQ(file.content(), "contents");
  EXPECT_EQ(file_object_read(nullptr, text, 1), 0);
  EXPECT_EQ(file_object_get_length(nullptr), 0U);
  EXPECT_FALSE(CFile().open(nullptr, 1));
}
