#include "file/target_file.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "file/file_descriptor.h"
#include "support/call_fault.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

// What preparing the target throws, or "prepared".
std::string complaint(const std::string& path) {
  try {
    prepare_target(path);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "prepared";
}

std::string refusal(const std::string& path) {
  return "Failed to open " + path + ": Not a regular file";
}

// Keeps a file immutable as long as it lives, where the file system has that and the user may ask for it.
class Immutability {
public:
  explicit Immutability(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)), holds_(set(true)) {}
  ~Immutability() { set(false); }
  Immutability(const Immutability&) = delete;
  Immutability& operator=(const Immutability&) = delete;

  bool holds() const { return holds_; }

private:
  bool set(bool immutable) const {
    int flags = 0;
    if (ioctl(file_.get(), FS_IOC_GETFLAGS, &flags) == -1) {
      return false;
    }
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    return ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0;
  }

  const FileDescriptor file_;
  const bool holds_;
};

constexpr const char* kNoImmutability = "no file can be made immutable here; tools/torture tries that on a disk";

class TargetFile : public testing::Test {
protected:
  TargetFile() : mask_before_(umask(022)) {}
  ~TargetFile() override { umask(mask_before_); }

  const TemporaryDirectory directory;
  const std::string path = directory / "target";

private:
  const mode_t mask_before_;
};

TEST_F(TargetFile, SaysWhyItFailedToOpen) {
  EXPECT_STREQ(failed_to_open("/a/b", EACCES).what(), "Failed to open /a/b: Permission denied");
}

TEST_F(TargetFile, RefusesWhatIsNeitherAFileNorADirectory) {
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

TEST_F(TargetFile, AMissingOneIsCreatedEmpty) {
  EXPECT_EQ(complaint(path), "prepared");
  EXPECT_TRUE(std::filesystem::is_regular_file(path));
  EXPECT_EQ(content_of(path), "");
  EXPECT_EQ(mode_of(path), 0644U);
}

TEST_F(TargetFile, APresentOneStaysAsItIs) {
  directory.write("target", "content");
  std::filesystem::permissions(path, std::filesystem::perms{0600});
  EXPECT_EQ(complaint(path), "prepared");
  EXPECT_EQ(content_of(path), "content");
  EXPECT_EQ(mode_of(path), 0600U);
}

TEST_F(TargetFile, OneThatCannotBeCreatedIsNotReportedYet) {
  EXPECT_EQ(complaint(directory / "missing/target"), "prepared");
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(TargetFile, OneThatMayNotBeWrittenIsNotReportedFor) {
  directory.write("target", "content");
  for (const int error : {EACCES, EPERM, EROFS, ETXTBSY, EMFILE}) {
    const CallFault fault(Call::open, error);
    EXPECT_EQ(complaint(path), "prepared");
    EXPECT_TRUE(fault.happened());
  }
}

TEST_F(TargetFile, AnImmutableOneIsRefused) {
  directory.write("target", "content");
  const Immutability immutability(path);
  if (!immutability.holds()) {
    GTEST_SKIP() << kNoImmutability;
  }
  EXPECT_EQ(complaint(path), "Failed to open " + path + ": Operation not permitted");
}

TEST_F(TargetFile, ALinkToAnImmutableOneIsNot) {
  directory.write("pointee", "content");
  std::filesystem::create_symlink("pointee", path);
  const Immutability immutability(directory / "pointee");
  if (!immutability.holds()) {
    GTEST_SKIP() << kNoImmutability;
  }
  EXPECT_EQ(complaint(path), "prepared");
}

TEST_F(TargetFile, ADirectoryIsNotReportedYet) {
  EXPECT_EQ(complaint(directory.path()), "prepared");
}

TEST_F(TargetFile, AFifoIsRefusedWithoutWaitingForAReader) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(complaint(path), refusal(path));
  EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST_F(TargetFile, AFifoThatTakesItsPlaceIsNotWaitedFor) {
  const CallFault change(Call::open, [this] { return mkfifo(path.c_str(), 0600); });
  EXPECT_EQ(complaint(path), "prepared");
  EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST_F(TargetFile, ALinkToAFifoIsRefused) {
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("fifo", path);
  EXPECT_EQ(complaint(path), refusal(path));
}

TEST_F(TargetFile, ADeviceIsRefused) {
  EXPECT_EQ(complaint("/dev/null"), refusal("/dev/null"));
}

TEST_F(TargetFile, ASocketIsRefused) {
  const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{AF_UNIX, ""};
  ASSERT_LT(path.copy(address.sun_path, sizeof address.sun_path - 1), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(complaint(path), refusal(path));
}

} // namespace

} // namespace tavek
