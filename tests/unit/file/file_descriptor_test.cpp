#include "file/file_descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace tavek {

namespace {

int open_null() {
  return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool is_open(int fd) {
  return fcntl(fd, F_GETFD) != -1;
}

TEST(FileDescriptor, OwnsNothingByDefault) {
  FileDescriptor none;
  EXPECT_FALSE(none.is_open());
  EXPECT_EQ(none.get(), -1);
  EXPECT_EQ(none.close(), 0);
}

TEST(FileDescriptor, IsClosedByItsDestructor) {
  const int fd = open_null();
  {
    const FileDescriptor owner(fd);
    EXPECT_EQ(owner.get(), fd);
    EXPECT_TRUE(is_open(fd));
  }
  EXPECT_FALSE(is_open(fd));
}

TEST(FileDescriptor, IsClosedOnlyOnce) {
  FileDescriptor owner(open_null());
  EXPECT_EQ(owner.close(), 0);
  EXPECT_FALSE(owner.is_open());
  EXPECT_EQ(owner.close(), 0);
}

TEST(FileDescriptor, ReportsAFailedClose) {
  const int fd = open_null();
  close(fd);
  FileDescriptor owner(fd);
  EXPECT_EQ(owner.close(), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(FileDescriptor, RemainsOpenAfterItsRelease) {
  FileDescriptor owner(open_null());
  const FileDescriptor other(owner.release());
  EXPECT_FALSE(owner.is_open());
  EXPECT_TRUE(is_open(other.get()));
}

TEST(FileDescriptor, IsMovedToItsNewOwner) {
  FileDescriptor first(open_null());
  const int fd = first.get();
  const FileDescriptor second(std::move(first));
  EXPECT_EQ(second.get(), fd);
  EXPECT_TRUE(is_open(fd));
}

TEST(FileDescriptor, IsClosedWhenAnotherIsAssigned) {
  FileDescriptor owner(open_null());
  const int before = owner.get();
  const int after = open_null();
  owner = FileDescriptor(after);
  EXPECT_EQ(owner.get(), after);
  EXPECT_FALSE(is_open(before));
  EXPECT_TRUE(is_open(after));
}

} // namespace

} // namespace tavek
