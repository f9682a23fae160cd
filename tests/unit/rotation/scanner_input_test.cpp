#include "rotation/scanner_input.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "file/file_descriptor.h"
#include "rotation/scanner_fatal_error.h"
#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

std::string_view bytes_of(ScannerInput& input) {
  return {input.data(), input.size()};
}

// Bytes of every value, so that none can be lost unseen.
std::string sample(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>((i * 7 + i / 256) % 256);
  }
  return bytes;
}

// What reading the file throws, or "read".
template <typename Error>
std::string complaint(const std::string& path) {
  try {
    ScannerInput{path};
  } catch (const Error& error) {
    return error.what();
  }
  return "read";
}

class ScannerInputTest : public testing::Test {
protected:
  const TemporaryDirectory directory;
  const std::string path = directory / "file";
};

TEST_F(ScannerInputTest, ReadsEveryByteOfAFileOfAnySize) {
  for (const std::size_t size : {0U, 1U, 2U, 4093U, 4094U, 4095U, 4096U, 4097U, 8191U, 8192U, 100000U}) {
    const std::string content = sample(size);
    ScannerInput input(directory.write("file", content));
    EXPECT_TRUE(bytes_of(input) == content) << size << " bytes";
  }
}

TEST_F(ScannerInputTest, EndsWithTwoNulBytesThatAreNotCounted) {
  ScannerInput input(directory.write("file", "abc"));
  EXPECT_EQ(input.size(), 3U);
  EXPECT_EQ(input.buffer_size(), 5U);
  EXPECT_EQ(std::string(input.data(), 5), std::string("abc\0\0", 5));
}

TEST_F(ScannerInputTest, FollowsASymbolicLink) {
  directory.write("file", "content");
  std::filesystem::create_symlink("file", directory / "link");
  ScannerInput input(directory / "link");
  EXPECT_EQ(bytes_of(input), "content");
}

TEST_F(ScannerInputTest, ReadsAFileThatGrowsMeanwhileToItsEnd) {
  const std::string content = sample(100);
  const std::string more = sample(70000);
  directory.write("file", content);
  const CallFault growth(Call::read, [&] {
    std::ofstream(path, std::ios::binary | std::ios::app) << more;
    return 0;
  });
  ScannerInput input(path);
  EXPECT_TRUE(growth.happened());
  EXPECT_TRUE(bytes_of(input) == content + more);
  EXPECT_EQ(std::string(input.data() + input.size(), 2), std::string(2, '\0'));
}

TEST_F(ScannerInputTest, ReadsAFileThatIsCutMeanwhile) {
  directory.write("file", sample(50000));
  const CallFault cut(Call::read, [&] {
    std::filesystem::resize_file(path, 10);
    return 0;
  });
  ScannerInput input(path);
  EXPECT_EQ(bytes_of(input), sample(10));
  EXPECT_EQ(input.buffer_size(), 12U);
}

TEST_F(ScannerInputTest, ReadsAgainAfterAnInterruption) {
  directory.write("file", "content");
  const CallFault interruption(Call::read, EINTR);
  ScannerInput input(path);
  EXPECT_TRUE(interruption.happened());
  EXPECT_EQ(bytes_of(input), "content");
}

TEST_F(ScannerInputTest, AReadErrorEndsTheScanner) {
  directory.write("file", "content");
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(complaint<ScannerFatalError>(path), "input in flex scanner failed");
}

TEST_F(ScannerInputTest, ADirectoryEndsTheScanner) {
  EXPECT_EQ(complaint<ScannerFatalError>(directory.path()), "input in flex scanner failed");
}

// The file is sparse, and refused before anything of it is read.
TEST_F(ScannerInputTest, AFileTooLargeForTheScannerEndsIt) {
  std::filesystem::resize_file(directory.write("file", ""), 2147483647 - 16);
  const CallFault reading(Call::read, 0);
  EXPECT_EQ(complaint<ScannerFatalError>(path), "fatal error - scanner input buffer overflow");
  EXPECT_FALSE(reading.happened());
}

// The read fails before anything of that much memory is touched.
TEST_F(ScannerInputTest, TheLargestFileThatFitsIsRead) {
  std::filesystem::resize_file(directory.write("file", ""), 2147483647 - 17);
  const CallFault fault(Call::read, EIO);
  EXPECT_EQ(complaint<ScannerFatalError>(path), "input in flex scanner failed");
}

TEST_F(ScannerInputTest, AFileWithoutAStatusCannotBeOpened) {
  directory.write("file", "content");
  const CallFault fault(Call::fstat, EIO);
  EXPECT_EQ(complaint<std::runtime_error>(path), "Failed to open " + path + ": Input/output error");
}

TEST_F(ScannerInputTest, NoChildInheritsTheFile) {
  directory.write("file", "content");
  std::optional<int> flags;
  const CallFault reading(Call::read, [&] {
    flags = descriptor_flags(path);
    return 0;
  });
  ScannerInput{path};
  EXPECT_EQ(flags, FD_CLOEXEC);
}

TEST_F(ScannerInputTest, AMissingFileCannotBeOpened) {
  EXPECT_EQ(complaint<std::runtime_error>(path), "Failed to open " + path + ": No such file or directory");
}

TEST_F(ScannerInputTest, AFifoIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(complaint<std::runtime_error>(path), "Failed to open " + path + ": Not a regular file");
}

TEST_F(ScannerInputTest, ADeviceIsRefused) {
  EXPECT_EQ(complaint<std::runtime_error>("/dev/zero"), "Failed to open /dev/zero: Not a regular file");
}

TEST_F(ScannerInputTest, ASocketCannotBeOpened) {
  const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{AF_UNIX, ""};
  ASSERT_LT(path.copy(address.sun_path, sizeof address.sun_path - 1), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(complaint<std::runtime_error>(path), "Failed to open " + path + ": No such device or address");
}

TEST_F(ScannerInputTest, LeavesNoDescriptorOpen) {
  directory.write("file", "content");
  const std::ptrdiff_t before = open_descriptors();
  ScannerInput{path};
  complaint<ScannerFatalError>(directory.path());
  complaint<std::runtime_error>("/dev/null");
  EXPECT_EQ(open_descriptors(), before);
}

} // namespace

} // namespace tavek
