#include "ENIObject/DescriptionSupport.h"

#include "File/File.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

using description_test::TemporaryFile;

TEST(File, ModeBitsChooseAccessTruncationAndCreation) {
  const std::map<int, std::pair<int, unsigned long>> expected{
      {0, {O_RDONLY, 7}}, {9, {O_RDONLY, 7}}, {2, {O_WRONLY, 0}}, {18, {O_WRONLY, 7}},
      {3, {O_RDWR, 0}},   {21, {O_RDWR, 7}},  {12, {O_RDWR, 0}},  {28, {O_RDWR, 7}}};
  for (const auto& [mode, accessAndLength] : expected) {
    SCOPED_TRACE(mode);
    const TemporaryFile file("content");
    file_object_handle* handle = file_object_create();
    ASSERT_TRUE(file_object_open(handle, file.path(), mode));
    EXPECT_EQ(fcntl(handle->fd, F_GETFL) & O_ACCMODE, accessAndLength.first);
    EXPECT_EQ(file_object_get_length(handle), accessAndLength.second);
    file_object_destroy(handle);

    unlink(file.path());
    const mode_t mask = umask(027);
    EXPECT_EQ(CFile().open(file.path(), mode), (mode & 8) != 0);
    EXPECT_EQ(umask(mask), 027U) << "the process's mask must come back";
    struct stat status {};
    EXPECT_TRUE(stat(file.path(), &status) != 0 || (status.st_mode & 07777U) == 0777U);
  }
}

TEST(File, AnOpenHandleRefusesASecondOpenAndTheLengthLeavesThePosition) {
  const TemporaryFile file("content");
  file_object_handle* handle = file_object_create();
  char text[8] = {};
  EXPECT_TRUE(file_object_read(handle, text, 4) == -1 && file_object_get_length(handle) == ~0UL);
  ASSERT_TRUE(file_object_open(handle, file.path(), 28));
  const int descriptor = handle->fd;
  EXPECT_FALSE(file_object_open(handle, file.path(), 1) || handle->fd != descriptor);
  EXPECT_EQ(file_object_read(handle, text, 3), 3);
  EXPECT_EQ(file_object_get_length(handle), 7U);
  EXPECT_EQ(file_object_read(handle, text, 8), 4);
  EXPECT_STREQ(text, "tent");
  EXPECT_EQ(file_object_write(handle, "s", 1), 1);
  file_object_destroy(handle);
  EXPECT_TRUE(handle == nullptr && fcntl(descriptor, F_GETFD) == -1) << "destroying closes";
  EXPECT_EQ(file.content(), "contents");
  EXPECT_FALSE(CFile().open(nullptr, 1) || file_object_read(nullptr, text, 1) != 0);
}
