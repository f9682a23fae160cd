#include "file/output_stream.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>

#include "support/call_fault.h"
#include "support/temporary_directory.h"

namespace tavek {

namespace {

constexpr std::size_t kCapacity = 65536;

class OutputStreamTest : public testing::Test {
protected:
  FileDescriptor file() const {
    return FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  }
  std::string written() const { return content_of(path); }

  const TemporaryDirectory directory;
  const std::string path = directory / "output";
  OutputStream stream;
};

TEST_F(OutputStreamTest, WritesWhatItIsGivenInOrderHoweverLongTheTextsAre) {
  std::string expected;
  stream.open(file());
  char byte = 'a';
  for (const std::size_t size : {std::size_t{1}, kCapacity - 1, std::size_t{1}, kCapacity, kCapacity + 1,
                                 std::size_t{0}, std::size_t{7}, 3 * kCapacity, std::size_t{2}, kCapacity - 2}) {
    const std::string text(size, byte++);
    stream.write(text);
    expected += text;
  }
  stream.finish();
  EXPECT_EQ(stream.error(), 0);
  EXPECT_TRUE(written() == expected) << "the file has " << written().size() << " bytes of " << expected.size();
}

TEST_F(OutputStreamTest, WritesNulBytes) {
  stream.open(file());
  stream.write(std::string_view("a\0b", 3));
  stream.finish();
  EXPECT_EQ(written(), std::string("a\0b", 3));
}

TEST_F(OutputStreamTest, KeepsWhatIsWrittenBeforeItIsOpen) {
  stream.write("early, ");
  stream.open(file());
  stream.write("late");
  stream.finish();
  EXPECT_EQ(stream.error(), 0);
  EXPECT_EQ(written(), "early, late");
}

TEST_F(OutputStreamTest, HoldsShortTextsBackUntilTheyDoNotFit) {
  stream.open(file());
  stream.write(std::string(kCapacity, 'x'));
  EXPECT_EQ(written().size(), 0U);
  stream.write("y");
  EXPECT_EQ(written().size(), kCapacity);
}

TEST_F(OutputStreamTest, HoldsNoLongTextBack) {
  stream.open(file());
  stream.write("y");
  stream.write(std::string(kCapacity, 'x'));
  EXPECT_EQ(written().size(), 1 + kCapacity);
}

TEST_F(OutputStreamTest, IsOpenFromItsOpeningToItsEnd) {
  EXPECT_FALSE(stream.is_open());
  stream.open(file());
  EXPECT_TRUE(stream.is_open());
  stream.finish();
  EXPECT_FALSE(stream.is_open());
}

TEST_F(OutputStreamTest, RestartDropsWhatIsBufferedAndWhatIsOnDisk) {
  stream.open(file());
  stream.write(std::string(2 * kCapacity, 'x'));
  stream.write("still buffered");
  stream.restart();
  EXPECT_EQ(written(), "");
  stream.write("anew");
  stream.finish();
  EXPECT_EQ(stream.error(), 0);
  EXPECT_EQ(written(), "anew");
}

TEST_F(OutputStreamTest, RestartForgivesNoEarlierError) {
  stream.open(file());
  stream.fail(ENOSPC);
  stream.restart();
  stream.finish();
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, RemembersTheFirstOfSeveralErrors) {
  EXPECT_EQ(stream.error(), 0);
  stream.fail(ENOSPC);
  stream.fail(EIO);
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, AFullDiskIsAnErrorAsSoonAsTheBufferIsWrittenOut) {
  stream.open(FileDescriptor(open("/dev/full", O_WRONLY | O_CLOEXEC)));
  stream.write(std::string(kCapacity, 'x'));
  EXPECT_EQ(stream.error(), 0);
  stream.write("y");
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, AFullDiskIsAnErrorWhenOnlyTheLastTextMeetsIt) {
  stream.open(FileDescriptor(open("/dev/full", O_WRONLY | O_CLOEXEC)));
  stream.write("short");
  stream.finish();
  EXPECT_EQ(stream.error(), ENOSPC);
}

TEST_F(OutputStreamTest, ADescriptorThatIsNotForWritingIsAnError) {
  directory.write("output", "old");
  stream.open(FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
  stream.write("new");
  stream.finish();
  EXPECT_EQ(stream.error(), EBADF);
  EXPECT_EQ(written(), "old");
}

TEST_F(OutputStreamTest, AStreamThatWasNeverOpenedIsAnErrorAtItsEnd) {
  stream.finish();
  EXPECT_EQ(stream.error(), EBADF);
}

TEST_F(OutputStreamTest, AnInterruptedWriteIsAnError) {
  stream.open(file());
  const CallFault fault(Call::write, EINTR);
  stream.write("text");
  stream.finish();
  EXPECT_EQ(stream.error(), EINTR);
}

TEST_F(OutputStreamTest, WritesNothingMoreOnceAWriteHasFailed) {
  stream.open(file());
  const CallFault fault(Call::write, EIO);
  stream.write(std::string(kCapacity, 'x'));
  stream.write("y");
  stream.finish();
  EXPECT_TRUE(fault.happened());
  EXPECT_EQ(stream.error(), EIO);
  EXPECT_EQ(written(), "") << "what follows a lost write would make a file with a hole in its middle";
}

// A pipe takes what it has room for, then nothing more.
TEST_F(OutputStreamTest, GoesOnAfterAShortWrite) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  const FileDescriptor reading(ends[0]);
  const auto room = static_cast<std::size_t>(fcntl(ends[1], F_GETPIPE_SZ));
  stream.open(FileDescriptor(ends[1]));
  stream.write(std::string(room, 'x') + "beyond");
  EXPECT_EQ(stream.error(), EAGAIN);
  std::string taken(room, '\0');
  EXPECT_EQ(read(reading.get(), taken.data(), room), static_cast<ssize_t>(room));
  EXPECT_TRUE(taken == std::string(room, 'x'));
}

TEST_F(OutputStreamTest, AFileThatCannotBeSyncedIsAnError) {
  stream.open(file());
  const CallFault fault(Call::fsync, EIO);
  stream.write("text");
  stream.finish();
  EXPECT_EQ(stream.error(), EIO);
}

TEST_F(OutputStreamTest, ALostFileIsNotSynced) {
  stream.open(file());
  stream.fail(ENOSPC);
  const CallFault fault(Call::fsync, EIO);
  stream.finish();
  EXPECT_FALSE(fault.happened());
}

TEST_F(OutputStreamTest, AFileThatCannotBeClosedIsAnError) {
  stream.open(file());
  const CallFault fault(Call::close, EDQUOT);
  stream.finish();
  EXPECT_EQ(stream.error(), EDQUOT);
  EXPECT_FALSE(stream.is_open());
}

TEST_F(OutputStreamTest, ALostFileIsClosedAllTheSame) {
  stream.open(file());
  stream.fail(ENOSPC);
  stream.finish();
  EXPECT_FALSE(stream.is_open());
}

TEST_F(OutputStreamTest, AStreamThatCannotGoBackIsAnError) {
  stream.open(file());
  const CallFault fault(Call::lseek, EIO);
  stream.restart();
  EXPECT_EQ(stream.error(), EIO);
}

TEST_F(OutputStreamTest, AStreamThatCannotStartAnewIsAnError) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor reading(ends[0]);
  stream.open(FileDescriptor(ends[1]));
  stream.restart();
  EXPECT_NE(stream.error(), 0);
}

} // namespace

} // namespace tavek
