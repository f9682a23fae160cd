#include "rotation/scanner_input.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/stat.h>

#include "rotation/scanner_fatal_error.h"
#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"
#include "support/thrown.h"

namespace tavek {

namespace {

std::string_view bytes_of(ScannerInput& input) {
  return {input.data(), input.size()};
}

// Bytes of every value, so that a lost byte is noticed.
std::string sample(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>((i * 7 + i / 256) % 256);
  }
  return bytes;
}

ScannerInput read(const std::string& path) {
  ScannerInput input(path);
  input.read();
  return input;
}

class ScannerInputTest : public testing::Test {
protected:
  // The message of the exception that reading the file throws.
  static std::string read_failure(const std::string& path) {
    ScannerInput input(path);
    return thrown_by<ScannerFatalError>([&] { input.read(); });
  }

  // The message of the exception that opening the file throws.
  static std::string open_failure(const std::string& path) {
    return thrown_by<std::runtime_error>([&] { ScannerInput{path}; });
  }

  const TemporaryDirectory directory;
  const std::string path = directory / "file";
};

TEST_F(ScannerInputTest, ReadsEveryByteOfAFileOfAnySize) {
  for (const std::size_t size : {0U, 1U, 2U, 4093U, 4094U, 4095U, 4096U, 4097U, 8191U, 8192U, 100000U}) {
    const std::string content = sample(size);
    ScannerInput input = read(directory.write("file", content));
    EXPECT_TRUE(bytes_of(input) == content) << size << " bytes";
  }
}

TEST_F(ScannerInputTest, EndsWithTwoNulBytesThatAreNotCounted) {
  ScannerInput input = read(directory.write("file", "abc"));
  EXPECT_EQ(input.size(), 3U);
  EXPECT_EQ(input.buffer_size(), 5U);
  EXPECT_EQ(std::string(input.data(), 5), std::string("abc\0\0", 5));
}

TEST_F(ScannerInputTest, ReadsToTheEndOfAFileThatGrowsDuringTheRead) {
  const std::string content = sample(100);
  const std::string more = sample(70000);
  directory.write("file", content);
  const CallFault growth(Call::read, [&] {
    std::ofstream(path, std::ios::binary | std::ios::app) << more;
    return 0;
  });
  ScannerInput input = read(path);
  EXPECT_TRUE(growth.happened());
  EXPECT_TRUE(bytes_of(input) == content + more);
  EXPECT_EQ(std::string(input.data() + input.size(), 2), std::string(2, '\0'));
}

TEST_F(ScannerInputTest, ReadsAFileThatIsTruncatedDuringTheRead) {
  directory.write("file", sample(50000));
  const CallFault truncation(Call::read, [&] {
    std::filesystem::resize_file(path, 10);
    return 0;
  });
  ScannerInput input = read(path);
  EXPECT_EQ(bytes_of(input), sample(10));
  EXPECT_EQ(input.buffer_size(), 12U);
}

TEST_F(ScannerInputTest, ReadsAgainAfterAnInterruptedRead) {
  directory.write("file", "content");
  const CallFault interruption(Call::read, EINTR);
  ScannerInput input = read(path);
  EXPECT_TRUE(interruption.happened());
  EXPECT_EQ(bytes_of(input), "content");
}

TEST_F(ScannerInputTest, ReportsAReadErrorAsTheScannerDoes) {
  directory.write("file", "content");
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(read_failure(path), "input in flex scanner failed");
}

// The file is sparse, and it is rejected before it is read.
TEST_F(ScannerInputTest, RejectsAFileTooLargeForTheScanner) {
  std::filesystem::resize_file(directory.write("file", ""), 2147483647 - 16);
  const CallFault reading(Call::read, 0);
  EXPECT_EQ(read_failure(path), "fatal error - scanner input buffer overflow");
  EXPECT_FALSE(reading.happened());
}

// The read is made to fail, so the test does not need that much memory.
TEST_F(ScannerInputTest, DoesNotRejectTheLargestFileThatFits) {
  std::filesystem::resize_file(directory.write("file", ""), 2147483647 - 17);
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(read_failure(path), "input in flex scanner failed");
}

TEST_F(ScannerInputTest, ReportsAFileWhoseStatusCannotBeRead) {
  directory.write("file", "content");
  const CallFault fault(Call::fstat, EIO);
  EXPECT_EQ(open_failure(path), "Failed to open " + path + ": Input/output error");
}

TEST_F(ScannerInputTest, ClosesTheFileInChildProcesses) {
  directory.write("file", "content");
  std::optional<int> flags;
  const CallFault reading(Call::read, [&] {
    flags = descriptor_flags(path);
    return 0;
  });
  read(path);
  EXPECT_EQ(flags, FD_CLOEXEC);
}

TEST_F(ScannerInputTest, ReportsAMissingFile) {
  EXPECT_EQ(open_failure(path), "Failed to open " + path + ": No such file or directory");
}

TEST_F(ScannerInputTest, RejectsAFifoWithoutWaitingForAWriter) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(open_failure(path), "Failed to open " + path + ": Not a regular file");
}

TEST_F(ScannerInputTest, LeavesNoDescriptorOpen) {
  directory.write("file", "content");
  const std::ptrdiff_t before = open_descriptors();
  read(path);
  read_failure(directory.path());
  open_failure("/dev/null");
  EXPECT_EQ(open_descriptors(), before);
}

} // namespace

} // namespace tavek
