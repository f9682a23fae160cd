#include "file/file_replacement.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <sys/stat.h>

#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"
#include "support/thrown.h"

namespace tavek {

namespace {

using Names = std::vector<std::string>;

class FileReplacementTest : public testing::Test {
protected:
  // The path of the temporary file beside the target, or "". There is never more than one.
  std::string temporary_file() const {
    Names names = directory.names();
    std::erase(names, "target");
    EXPECT_LE(names.size(), 1U);
    return names.empty() ? "" : directory / names.front();
  }

  static void write_and_rename(FileReplacement& replacement) {
    replacement.output().write("new");
    replacement.complete();
    replacement.rename_over_target();
  }

  const TemporaryDirectory directory;
  const std::string target = directory.write("target", "old");
};

TEST_F(FileReplacementTest, NamesTheTemporaryFileAfterTheTarget) {
  const FileReplacement replacement(target);
  const std::string name = temporary_file();
  EXPECT_EQ(masked(name, target), target + ".??????");
  EXPECT_TRUE(std::all_of(name.end() - 6, name.end(), [](unsigned char byte) { return std::isalnum(byte) != 0; }))
      << name;
}

TEST_F(FileReplacementTest, CreatesTheTemporaryFileWithMode0644UnderAnyUmask) {
  for (const mode_t mask : {0U, 0777U}) {
    const mode_t before = umask(mask);
    const FileReplacement replacement(target);
    umask(before);
    EXPECT_EQ(mode_of(temporary_file()), 0644U) << std::oct << mask;
  }
}

TEST_F(FileReplacementTest, ClosesTheTemporaryFileInChildProcesses) {
  const FileReplacement replacement(target);
  EXPECT_EQ(descriptor_flags(temporary_file()), FD_CLOEXEC);
}

TEST_F(FileReplacementTest, ReplacesTheTargetOnlyAtTheRename) {
  {
    FileReplacement replacement(target);
    replacement.output().write("new");
    replacement.complete();
    EXPECT_EQ(content_of(target), "old");
    EXPECT_EQ(content_of(temporary_file()), "new");
    replacement.rename_over_target();
  }
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(mode_of(target), 0644U);
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, RemovesATemporaryFileThatWasNotRenamed) {
  for (const bool completed : {false, true}) {
    {
      FileReplacement replacement(target);
      replacement.output().write("new");
      if (completed) {
        replacement.complete();
      }
    }
    EXPECT_EQ(directory.names(), Names{"target"});
    EXPECT_EQ(content_of(target), "old");
  }
}

TEST_F(FileReplacementTest, ReportsAnyEarlierFailureOnCompletion) {
  for (const Call call : {Call::fchmod, Call::write, Call::fsync, Call::close}) {
    const CallFault fault(call, EDQUOT);
    FileReplacement replacement(target);
    EXPECT_NO_THROW(replacement.require_open());
    replacement.output().write("new");
    const std::string path = temporary_file();
    EXPECT_EQ(thrown_by<std::runtime_error>([&] { replacement.complete(); }),
              "Failed to write " + path + ": Disk quota exceeded");
    EXPECT_TRUE(fault.happened()) << static_cast<int>(call);
  }
  EXPECT_EQ(directory.names(), Names{"target"});
}

// The new file is in place by then, so this is the only failure after which the target is new.
TEST_F(FileReplacementTest, ReportsARenameThatMayNotSurviveAPowerLoss) {
  FileReplacement replacement(target);
  replacement.output().write("new");
  replacement.complete();
  const CallFault fault(Call::fsync, EIO);
  EXPECT_EQ(thrown_by<std::runtime_error>([&] { replacement.rename_over_target(); }),
            target + " is in place, but this may not survive a power loss: Input/output error");
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, KeepsTheTargetIfTheDirectoryCannotBeOpened) {
  {
    FileReplacement replacement(target);
    replacement.complete();
    const CallFault fault(Call::open, EMFILE);
    EXPECT_THROW(replacement.rename_over_target(), std::runtime_error);
  }
  EXPECT_EQ(content_of(target), "old");
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, NamesTheFileThatItCannotCreate) {
  const std::string missing = directory / "missing/target";
  const FileReplacement replacement(missing);
  EXPECT_EQ(masked(thrown_by<std::runtime_error>([&] { replacement.require_open(); }), missing),
            "Failed to open " + missing + ".??????: No such file or directory");
}

// A name of more than 80 characters takes two allocations.
TEST_F(FileReplacementTest, ThrowsIfItsNameCannotBeAllocated) {
  const std::string long_target = directory / std::string(200, 'x');
  for (const int nth : {1, 2}) {
    const CallFault fault(Call::allocation, ENOMEM, nth);
    EXPECT_THROW(FileReplacement{long_target}, std::bad_alloc) << nth;
  }
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, OpensTheTemplateItselfIfNoRandomNameIsAvailable) {
  const CallFault fault(Call::mkostemp, EEXIST);
  const mode_t before = umask(022);
  FileReplacement replacement(target);
  umask(before);
  EXPECT_NO_THROW(replacement.require_open());
  EXPECT_EQ(temporary_file(), target + ".XXXXXX");
  EXPECT_EQ(descriptor_flags(temporary_file()), FD_CLOEXEC);
  write_and_rename(replacement);
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(mode_of(target), 0644U);
}

TEST_F(FileReplacementTest, EmptiesAnExistingFileNamedLikeTheTemplate) {
  directory.write("target.XXXXXX", "longer than the new content");
  const CallFault fault(Call::mkostemp, EEXIST);
  FileReplacement replacement(target);
  write_and_rename(replacement);
  EXPECT_EQ(content_of(target), "new");
}

// Anyone can predict the name of the template.
TEST_F(FileReplacementTest, DoesNotFollowALinkNamedLikeTheTemplate) {
  directory.write("pointee", "kept");
  std::filesystem::create_symlink("pointee", target + ".XXXXXX");
  {
    const CallFault fault(Call::mkostemp, EEXIST);
    const FileReplacement replacement(target);
    EXPECT_THROW(replacement.require_open(), std::runtime_error);
  }
  EXPECT_EQ(content_of(directory / "pointee"), "kept");
  EXPECT_TRUE(std::filesystem::is_symlink(target + ".XXXXXX")) << "it removes only a file that it created";
}

} // namespace

} // namespace tavek
