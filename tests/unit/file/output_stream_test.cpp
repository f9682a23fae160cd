#include "file/output_stream.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>

#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

constexpr std::size_t kBuffer = 32768;

class OutputStreamTest : public testing::Test {
protected:
  void open_file() { stream.open(FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600))); }
  std::string written() const { return content_of(path); }

  const TemporaryDirectory directory;
  const std::string path = directory / "output";
  OutputStream stream;
};

TEST_F(OutputStreamTest, WritesTextsOfAnyLengthInOrder) {
  std::string expected;
  open_file();
  char byte = 'a';
  for (const std::size_t size : {std::size_t{1}, kBuffer - 1, std::size_t{1}, kBuffer, kBuffer + 1, std::size_t{0},
                                 std::size_t{7}, 3 * kBuffer, std::size_t{2}, kBuffer - 2}) {
    const std::string text(size, byte++);
    stream.write(text);
    expected += text;
  }
  EXPECT_TRUE(descriptor_flags(path));
  stream.finish();
  EXPECT_FALSE(descriptor_flags(path));
  EXPECT_EQ(stream.error(), 0);
  EXPECT_TRUE(written() == expected) << "the file has " << written().size() << " bytes of " << expected.size();
}

TEST_F(OutputStreamTest, KeepsTextThatIsWrittenBeforeItIsOpen) {
  stream.write("early, ");
  open_file();
  stream.write("late");
  stream.finish();
  EXPECT_EQ(stream.error(), 0);
  EXPECT_EQ(written(), "early, late");
}

TEST_F(OutputStreamTest, BuffersShortTextsUntilTheBufferIsFull) {
  open_file();
  stream.write(std::string(kBuffer, 'x'));
  EXPECT_EQ(written().size(), 0U);
  stream.write("y");
  EXPECT_EQ(written().size(), kBuffer);
}

TEST_F(OutputStreamTest, WritesALongTextImmediately) {
  open_file();
  stream.write("y");
  stream.write(std::string(kBuffer, 'x'));
  EXPECT_EQ(written().size(), 1 + kBuffer);
}

TEST_F(OutputStreamTest, RestartDropsBufferedAndWrittenText) {
  open_file();
  stream.write(std::string(2 * kBuffer, 'x'));
  stream.write("still buffered");
  stream.restart();
  EXPECT_EQ(written(), "");
  stream.write("new");
  stream.finish();
  EXPECT_EQ(stream.error(), 0);
  EXPECT_EQ(written(), "new");
}

TEST_F(OutputStreamTest, RemembersTheFirstError) {
  EXPECT_EQ(stream.error(), 0);
  stream.fail(ENOSPC);
  stream.fail(EIO);
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, RemembersAFailedWrite) {
  stream.open(FileDescriptor(open("/dev/full", O_WRONLY | O_CLOEXEC)));
  stream.write("short");
  EXPECT_EQ(stream.error(), 0);
  stream.finish();
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, RemembersThatItWasNeverOpened) {
  stream.finish();
  EXPECT_EQ(stream.error(), EBADF);
}

// If a later write succeeded, the file would have a hole.
TEST_F(OutputStreamTest, WritesNothingAfterAFailedWrite) {
  open_file();
  const CallFault fault(Call::write, EIO);
  stream.write(std::string(kBuffer, 'x'));
  stream.write("y");
  stream.finish();
  EXPECT_TRUE(fault.happened());
  EXPECT_EQ(stream.error(), EIO);
  EXPECT_EQ(written(), "");
}

// A nonblocking pipe accepts as many bytes as fit, then none.
TEST_F(OutputStreamTest, ContinuesAfterAShortWrite) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  const FileDescriptor reading(ends[0]);
  const auto room = static_cast<std::size_t>(fcntl(ends[1], F_GETPIPE_SZ));
  stream.open(FileDescriptor(ends[1]));
  stream.write(std::string(room, 'x') + "beyond");
  EXPECT_EQ(stream.error(), EAGAIN);
  std::string received(room, '\0');
  EXPECT_EQ(read(reading.get(), received.data(), room), static_cast<ssize_t>(room));
  EXPECT_TRUE(received == std::string(room, 'x'));
}

TEST_F(OutputStreamTest, RemembersAFailedSync) {
  open_file();
  const CallFault fault(Call::fsync, EIO);
  stream.finish();
  EXPECT_EQ(stream.error(), EIO);
}

TEST_F(OutputStreamTest, ClosesButDoesNotSyncAfterAnError) {
  open_file();
  stream.fail(ENOSPC);
  const CallFault fault(Call::fsync, EIO);
  stream.finish();
  EXPECT_FALSE(fault.happened());
  EXPECT_FALSE(descriptor_flags(path));
}

TEST_F(OutputStreamTest, RemembersAFailedClose) {
  open_file();
  const CallFault fault(Call::close, EDQUOT);
  stream.finish();
  EXPECT_EQ(stream.error(), EDQUOT);
  EXPECT_FALSE(descriptor_flags(path));
}

TEST_F(OutputStreamTest, RemembersAFailedRestart) {
  open_file();
  const CallFault fault(Call::lseek, EIO);
  stream.restart();
  EXPECT_EQ(stream.error(), EIO);
}

// A pipe can be neither truncated nor rewound. Truncating is tried first, so its error is remembered.
TEST_F(OutputStreamTest, RemembersThatTheFileCannotBeTruncated) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor reading(ends[0]);
  stream.open(FileDescriptor(ends[1]));
  stream.restart();
  EXPECT_EQ(stream.error(), EINVAL);
}

} // namespace

} // namespace tavek
