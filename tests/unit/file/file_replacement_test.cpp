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

namespace tavek {

namespace {

using Names = std::vector<std::string>;

class FileReplacementTest : public testing::Test {
protected:
  // The temporary file beside the target, or nothing. There is never more than one.
  std::string temporary_file() const {
    Names names = directory.names();
    std::erase(names, "target");
    EXPECT_LE(names.size(), 1U);
    return names.empty() ? "" : directory / names.front();
  }

  // What completing a replacement throws, or "completed".
  static std::string complaint(FileReplacement& replacement) {
    try {
      replacement.complete();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "completed";
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

TEST_F(FileReplacementTest, EveryOneSeesTheNewFileWhateverTheMaskIs) {
  for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
    const mode_t before = umask(mask);
    const FileReplacement replacement(target);
    umask(before);
    EXPECT_EQ(mode_of(temporary_file()), 0644U) << std::oct << mask;
  }
}

TEST_F(FileReplacementTest, NoChildInheritsTheTemporaryFile) {
  const FileReplacement replacement(target);
  EXPECT_EQ(descriptor_flags(temporary_file()), FD_CLOEXEC);
}

TEST_F(FileReplacementTest, TheTargetIsUntouchedUntilTheRename) {
  FileReplacement replacement(target);
  replacement.output().write("new");
  EXPECT_EQ(content_of(target), "old");
  replacement.complete();
  EXPECT_EQ(content_of(target), "old");
  EXPECT_EQ(content_of(temporary_file()), "new");
}

TEST_F(FileReplacementTest, TheRenameReplacesTheTarget) {
  std::filesystem::permissions(target, std::filesystem::perms{0600});
  FileReplacement replacement(target);
  replacement.output().write("new");
  replacement.complete();
  replacement.rename_over_target();
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(mode_of(target), 0644U);
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, TheNewTargetOutlivesTheReplacement) {
  {
    FileReplacement replacement(target);
    replacement.complete();
    replacement.rename_over_target();
  }
  EXPECT_EQ(directory.names(), Names{"target"});
  EXPECT_EQ(content_of(target), "");
}

TEST_F(FileReplacementTest, NeedsNoTarget) {
  std::filesystem::remove(target);
  FileReplacement replacement(target);
  replacement.output().write("new");
  replacement.complete();
  replacement.rename_over_target();
  EXPECT_EQ(content_of(target), "new");
}

TEST_F(FileReplacementTest, ReplacesALinkByAFileAndLeavesWhatItPointedTo) {
  directory.write("pointee", "kept");
  std::filesystem::remove(target);
  std::filesystem::create_symlink("pointee", target);
  FileReplacement replacement(target);
  replacement.output().write("new");
  replacement.complete();
  replacement.rename_over_target();
  EXPECT_FALSE(std::filesystem::is_symlink(target));
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(content_of(directory / "pointee"), "kept");
}

TEST_F(FileReplacementTest, RemovesATemporaryFileThatWasNotCompleted) {
  { const FileReplacement replacement(target); }
  EXPECT_EQ(directory.names(), Names{"target"});
  EXPECT_EQ(content_of(target), "old");
}

TEST_F(FileReplacementTest, RemovesATemporaryFileThatWasNotRenamed) {
  {
    FileReplacement replacement(target);
    replacement.output().write("new");
    replacement.complete();
  }
  EXPECT_EQ(directory.names(), Names{"target"});
  EXPECT_EQ(content_of(target), "old");
}

TEST_F(FileReplacementTest, RemovesTheTemporaryFileWhenAnExceptionPasses) {
  const auto fail = [&] {
    FileReplacement replacement(target);
    replacement.output().write("half of the n");
    throw std::runtime_error("no more");
  };
  EXPECT_THROW(fail(), std::runtime_error);
  EXPECT_EQ(directory.names(), Names{"target"});
  EXPECT_EQ(content_of(target), "old");
}

TEST_F(FileReplacementTest, AnyFailureOnTheWayIsReportedWhenItIsCompleted) {
  for (const Call call : {Call::fchmod, Call::write, Call::fsync, Call::close}) {
    const CallFault fault(call, EDQUOT);
    FileReplacement replacement(target);
    EXPECT_NO_THROW(replacement.require_open());
    replacement.output().write("new");
    const std::string path = temporary_file();
    EXPECT_EQ(complaint(replacement), "Failed to write " + path + ": Disk quota exceeded");
    EXPECT_TRUE(fault.happened()) << static_cast<int>(call);
  }
  EXPECT_EQ(directory.names(), Names{"target"});
  EXPECT_EQ(content_of(target), "old");
}

// Nothing has been written by then, so only the mode tells that the file is not as it should be.
TEST_F(FileReplacementTest, AnEmptyFileOfTheWrongModeIsAFailureToo) {
  const CallFault fault(Call::fchmod, EPERM);
  FileReplacement replacement(target);
  EXPECT_EQ(complaint(replacement), "Failed to write " + temporary_file() + ": Operation not permitted");
}

TEST_F(FileReplacementTest, AFailedRenameLeavesTheNewFileToTheAdministrator) {
  std::filesystem::remove(target);
  std::filesystem::create_directory(target);
  {
    FileReplacement replacement(target);
    replacement.output().write("new");
    replacement.complete();
    const std::string temporary = temporary_file();
    try {
      replacement.rename_over_target();
      ADD_FAILURE() << "a directory was replaced";
    } catch (const std::filesystem::filesystem_error& error) {
      EXPECT_EQ(error.what(), "filesystem error: cannot rename: Is a directory [" + temporary + "] [" + target + "]");
    }
  }
  EXPECT_TRUE(std::filesystem::is_directory(target));
  EXPECT_EQ(content_of(temporary_file()), "new");
  EXPECT_EQ(mode_of(temporary_file()), 0644U);
}

TEST_F(FileReplacementTest, SaysWhichFileItCouldNotCreate) {
  const std::string missing = directory / "missing/target";
  const FileReplacement replacement(missing);
  try {
    replacement.require_open();
    ADD_FAILURE() << "a file was created";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(masked(error.what(), missing), "Failed to open " + missing + ".??????: No such file or directory");
  }
}

// Two blocks make a name of more than 80 characters.
TEST_F(FileReplacementTest, WithoutMemoryForItsNameThereIsNoReplacement) {
  const std::string long_target = directory / std::string(200, 'x');
  for (const int nth : {1, 2}) {
    const CallFault failing(Call::allocation, ENOMEM, nth);
    EXPECT_THROW(FileReplacement{long_target}, std::bad_alloc) << nth;
  }
  EXPECT_EQ(directory.names(), Names{"target"});
}

TEST_F(FileReplacementTest, CreatesTheFileUnderItsTemplateWhenNoRandomNameCanBeHad) {
  const CallFault fault(Call::mkostemp, EEXIST);
  const mode_t before = umask(022);
  FileReplacement replacement(target);
  umask(before);
  EXPECT_NO_THROW(replacement.require_open());
  EXPECT_EQ(temporary_file(), target + ".XXXXXX");
  EXPECT_EQ(descriptor_flags(temporary_file()), FD_CLOEXEC);
  replacement.output().write("new");
  replacement.complete();
  replacement.rename_over_target();
  EXPECT_EQ(content_of(target), "new");
  EXPECT_EQ(mode_of(target), 0644U);
}

// Anybody can know that name beforehand.
TEST_F(FileReplacementTest, DoesNotFollowALinkUnderTheNameOfTheTemplate) {
  directory.write("pointee", "kept");
  std::filesystem::create_symlink("pointee", target + ".XXXXXX");
  {
    const CallFault fault(Call::mkostemp, EEXIST);
    const FileReplacement replacement(target);
    EXPECT_THROW(replacement.require_open(), std::runtime_error);
  }
  EXPECT_EQ(content_of(directory / "pointee"), "kept");
  EXPECT_TRUE(std::filesystem::is_symlink(target + ".XXXXXX")) << "what it did not create it does not remove";
}

} // namespace

} // namespace tavek
