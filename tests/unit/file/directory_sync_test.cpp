#include "file/directory_sync.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"
#include "support/thrown.h"

namespace tavek {

namespace {

class DirectorySyncTest : public testing::Test {
protected:
  // What a sync of the file's directory throws if fsync fails with `error`.
  std::string failure(int error) const {
    const CallFault fault(Call::fsync, error);
    const std::string message = thrown_by([this] { DirectorySync(path).sync("is removed"); });
    EXPECT_TRUE(fault.happened()) << error;
    return message;
  }

  const TemporaryDirectory directory;
  const std::string path = directory / "file";
};

TEST_F(DirectorySyncTest, SyncsTheDirectoryOfAFileThatNeedNotExist) {
  const CallFault no_error(Call::fsync, 0);
  const DirectorySync sync(path);
  EXPECT_EQ(descriptor_flags(directory.path()), FD_CLOEXEC);
  EXPECT_FALSE(no_error.happened());
  sync.sync("is removed");
  EXPECT_TRUE(no_error.happened());
}

TEST_F(DirectorySyncTest, OpensTheWorkingDirectoryForANameWithoutASlash) {
  const std::string name = "file";
  const DirectorySync sync(name);
  EXPECT_EQ(descriptor_flags(std::filesystem::current_path()), FD_CLOEXEC);
}

TEST_F(DirectorySyncTest, ReportsAnErrorAfterWhichTheChangeMayBeLost) {
  for (const int error : {EIO, ENOSPC, EDQUOT, EINTR, ENOMEM}) {
    EXPECT_EQ(failure(error), path + " is removed, but this may not survive a power loss: " + strerror(error));
  }
}

TEST_F(DirectorySyncTest, AcceptsAFileSystemThatDoesNotSyncDirectories) {
  for (const int error : {EINVAL, EROFS, EOPNOTSUPP, ENOSYS}) {
    EXPECT_EQ(failure(error), "nothing thrown") << error;
  }
}

// The caller's own operation reports these errors, or there is nothing to sync.
TEST_F(DirectorySyncTest, AcceptsADirectoryThatCannotBeReadOrDoesNotExist) {
  for (const int error : {EACCES, ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG}) {
    const CallFault no_directory(Call::open, error);
    EXPECT_NO_THROW(DirectorySync(path).sync("is removed")) << error;
    EXPECT_TRUE(no_directory.happened());
  }
}

TEST_F(DirectorySyncTest, ReportsAnyOtherFailureToOpenTheDirectoryBeforeTheChange) {
  for (const int error : {EMFILE, ENFILE, ENOMEM, EIO}) {
    const CallFault no_directory(Call::open, error);
    EXPECT_EQ(thrown_by([this] { DirectorySync{path}; }),
              "Failed to open " + directory.path() + "/: " + strerror(error));
  }
}

// After a rename nothing but the sync may fail.
TEST_F(DirectorySyncTest, NeedsNoMemoryForASuccessfulSync) {
  const DirectorySync sync(path);
  const CallFault no_memory(Call::allocation, ENOMEM);
  sync.sync("is removed");
  EXPECT_FALSE(no_memory.happened());
}

} // namespace

} // namespace tavek
