#include "file/target_file.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "file/file_descriptor.h"
#include "support/temporary_directory.h"
#include "support/thrown.h"

namespace tavek {

namespace {

// The message with which a target is rejected.
std::string rejection(const std::string& path) {
  return thrown_by<std::runtime_error>([&] { refuse_irreplaceable(path); });
}

// Sets an attribute of a file while this object exists, if the file system supports it and the user has permission.
class Attribute {
public:
  Attribute(const std::string& path, int flag)
      : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)), flag_(flag), active_(set(true)) {}
  ~Attribute() { set(false); }
  Attribute(const Attribute&) = delete;
  Attribute& operator=(const Attribute&) = delete;

  bool active() const { return active_; }

private:
  bool set(bool on) const {
    int flags = 0;
    if (ioctl(file_.get(), FS_IOC_GETFLAGS, &flags) == -1) {
      return false;
    }
    flags = on ? flags | flag_ : flags & ~flag_;
    return ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0;
  }

  const FileDescriptor file_;
  const int flag_;
  const bool active_;
};

constexpr const char* kNoAttributes = "the attributes of files cannot be set here";

class TargetFile : public testing::Test {
protected:
  TargetFile() : mask_before_(umask(022)) {}
  ~TargetFile() override { umask(mask_before_); }

  const TemporaryDirectory directory;
  const std::string path = directory / "target";

private:
  const mode_t mask_before_;
};

TEST_F(TargetFile, NamesThePathAndTheErrorOfAFailedOpen) {
  EXPECT_STREQ(failed_to_open("/a/b", EACCES).what(), "Failed to open /a/b: Permission denied");
}

TEST_F(TargetFile, RejectsFifosAndSocketsAndDevices) {
  struct stat status {};
  for (const mode_t kind : std::initializer_list<mode_t>{S_IFIFO, S_IFSOCK, S_IFCHR, S_IFBLK}) {
    status.st_mode = kind | 0644;
    EXPECT_THROW(refuse_special_file("x", status), std::runtime_error) << std::oct << kind;
  }
  for (const mode_t kind : std::initializer_list<mode_t>{S_IFREG, S_IFDIR}) {
    status.st_mode = kind | 0644;
    EXPECT_NO_THROW(refuse_special_file("x", status)) << std::oct << kind;
  }
}

TEST_F(TargetFile, IsCreatedEmptyIfItIsMissing) {
  create_if_missing(path);
  EXPECT_TRUE(std::filesystem::is_regular_file(path));
  EXPECT_EQ(content_of(path), "");
  EXPECT_EQ(mode_of(path), 0644U);
}

TEST_F(TargetFile, IsUnchangedIfItExists) {
  directory.write("target", "content");
  std::filesystem::permissions(path, std::filesystem::perms{0600});
  create_if_missing(path);
  EXPECT_EQ(content_of(path), "content");
  EXPECT_EQ(mode_of(path), 0600U);
}

// If the file cannot be read or replaced, a later step reports it. A file that is not writable can still be read and
// replaced.
TEST_F(TargetFile, IsLeftAloneIfItCannotBeCreatedOrWritten) {
  create_if_missing(directory / "missing/target");
  create_if_missing(directory.path());
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(TargetFile, IsOpenedWithoutWaitingIfAFifoTakesItsPlace) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  create_if_missing(path);
  EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST_F(TargetFile, CanBeReplacedIfItIsAFileOrADirectoryOrIsMissing) {
  refuse_irreplaceable(path);
  refuse_irreplaceable(directory / "missing/target");
  refuse_irreplaceable(directory.path());
  refuse_irreplaceable(directory.write("target", "content"));
  std::filesystem::create_symlink("nowhere", directory / "dangling");
  refuse_irreplaceable(directory / "dangling");
  EXPECT_EQ(content_of(path), "content");
}

TEST_F(TargetFile, IsRejectedIfItIsImmutableOrAppendOnly) {
  directory.write("target", "content");
  for (const int flag : {FS_IMMUTABLE_FL, FS_APPEND_FL}) {
    const Attribute attribute(path, flag);
    if (!attribute.active()) {
      GTEST_SKIP() << kNoAttributes;
    }
    EXPECT_EQ(rejection(path), "Failed to open " + path + ": Operation not permitted") << flag;
  }
}

// Reading a directory fails, whether it is immutable or not.
TEST_F(TargetFile, IsNotRejectedIfItIsAnImmutableDirectory) {
  std::filesystem::create_directory(path);
  const Attribute immutable(path, FS_IMMUTABLE_FL);
  if (!immutable.active()) {
    GTEST_SKIP() << kNoAttributes;
  }
  refuse_irreplaceable(path);
}

// A rename replaces the link.
TEST_F(TargetFile, MayBeALinkToAnImmutableFile) {
  directory.write("pointee", "content");
  std::filesystem::create_symlink("pointee", path);
  const Attribute immutable(directory / "pointee", FS_IMMUTABLE_FL);
  if (!immutable.active()) {
    GTEST_SKIP() << kNoAttributes;
  }
  refuse_irreplaceable(path);
}

TEST_F(TargetFile, IsRejectedIfItIsAFifoOrALinkToOne) {
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("fifo", path);
  for (const std::string& rejected : {directory / "fifo", path}) {
    EXPECT_EQ(rejection(rejected), "Failed to open " + rejected + ": Not a regular file");
  }
}

} // namespace

} // namespace tavek
