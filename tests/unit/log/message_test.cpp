#include "log/message.h"

#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "support/call_fault.h"
#include "unit/log/log_fixture.h"

namespace tavek {

namespace {

using test::on_both_streams;
using test::Writes;
using test::written_by;

// The text that follows a message if errno is ENOENT.
std::string not_found() {
  return "\nSystem error 2: No such file or directory";
}

class PrintMessage : public test::LogFixture {};

class DieMessage : public test::LogFixture {
protected:
  /// The output of die_message() with status 0 and with errno set to `error`.
  static Writes written(int error, const std::string& message) {
    return written_by([error, &message] {
      errno = error;
      die_message(0, 0, "%s", message.c_str());
    });
  }
};

// A death test sees only standard error. Joins both streams in order, so that the test sees both.
void join_streams() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST_F(PrintMessage, AddsANewlineOnlyIfTheTextDoesNotEndWithOne) {
  EXPECT_EQ(written_by([] { print_message("two\nlines\n", 0); }), on_both_streams("two\nlines\n"));
  EXPECT_EQ(written_by([] { print_message("", 0); }), on_both_streams("\n"));
}

TEST_F(PrintMessage, PrintsPercentSignsUnchanged) {
  EXPECT_EQ(written_by([] { print_message("%s%n", 0); }), on_both_streams("%s%n\n"));
}

TEST_F(PrintMessage, StartsWithTheBaseNameOfTheProgram) {
  log_state().program_path = "/opt/oru/admin/sbin/tool";
  EXPECT_EQ(written_by([] { print_message("text\n", 0); }), on_both_streams("tool: text\n"));
  EXPECT_EQ(written_by([] { print_message("", 0); }), on_both_streams("tool: \n"));
}

TEST_F(PrintMessage, ReturnsZeroForStatusZero) {
  int result = -1;
  written_by([&result] { result = print_message("text", 0, 5); });
  EXPECT_EQ(result, 0);
}

TEST_F(PrintMessage, ExitsWithAnyOtherStatusAfterPrinting) {
  log_state().program_path = "/sbin/tool";
  for (const int status : {1, 3, 255}) {
    EXPECT_EXIT((join_streams(), print_message("gone", status, 1)), testing::ExitedWithCode(status),
                "^tool: gone\ntool: gone\n$");
  }
}

TEST_F(DieMessage, PrintsOnlyTheFormattedMessageIfErrnoIsZero) {
  const auto action = [] {
    errno = 0;
    die_message(0, 0, "%s of %d", "five", 7);
  };
  EXPECT_EQ(written_by(action), on_both_streams("five of 7\n"));
}

TEST_F(DieMessage, AppendsTheSystemError) {
  log_state().program_path = "/sbin/tool";
  EXPECT_EQ(written(ENOENT, "cannot open"), on_both_streams("tool: cannot open" + not_found() + "\n"));
  EXPECT_EQ(written(EACCES, "cannot open\n"),
            on_both_streams("tool: cannot open\n\nSystem error 13: Permission denied\n"));
}

TEST_F(DieMessage, LeavesErrnoUnchanged) {
  int error = 0;
  written_by([&error] {
    errno = ENOENT;
    die_message(0, 0, "text");
    error = errno;
  });
  EXPECT_EQ(error, ENOENT);
}

TEST_F(DieMessage, ExitsWithItsStatus) {
  log_state().program_path = "tool";
  const auto die = [](int status) {
    join_streams();
    errno = ENOENT;
    die_message(status, 9, "no %s", "way");
  };
  const std::string line = "tool: no way" + not_found() + "\n";
  for (const int status : {1, 4}) {
    EXPECT_EXIT(die(status), testing::ExitedWithCode(status), "^" + line + line + "$");
  }
}

TEST_F(DieMessage, PrintsTheWholeOfALongMessage) {
  for (const std::size_t length : {4095U, 4096U, 4097U, 20000U}) {
    const std::string message(length, 'm');
    EXPECT_EQ(written(0, message), on_both_streams(message + "\n")) << length;
  }
}

TEST_F(DieMessage, OmitsASystemErrorThatDoesNotFitIn4096Bytes) {
  const std::string fits(4095 - not_found().size(), 'm');
  EXPECT_EQ(written(ENOENT, fits), on_both_streams(fits + not_found() + "\n"));
  for (const std::string& message : {fits + "m", std::string(4095, 'm'), std::string(9000, 'm')}) {
    EXPECT_EQ(written(ENOENT, message), on_both_streams(message + "\n")) << message.size();
  }
}

TEST_F(DieMessage, AllocatesOnceForAMessageOfUpTo4095Characters) {
  const CallFault second(Call::allocation, ENOMEM, 2);
  EXPECT_EQ(written(0, std::string(4095, 'm')), on_both_streams(std::string(4095, 'm') + "\n"));
}

TEST_F(DieMessage, TruncatesALongMessageIfMemoryRunsOut) {
  const CallFault second(Call::allocation, ENOMEM, 2);
  EXPECT_EQ(written(ENOENT, std::string(5000, 'm')), on_both_streams(std::string(4095, 'm') + "\n"));
}

TEST_F(DieMessage, ReportsThatThereIsNoMemoryAtAll) {
  log_state().program_path = "tool";
  const CallFault first(Call::allocation, ENOMEM);
  EXPECT_EQ(written(ENOENT, "text"), on_both_streams("tool: Can't allocate memory for error message\n"));
}

TEST_F(DieMessage, ExitsWithItsStatusEvenWithoutMemory) {
  const auto die = [](int status) {
    join_streams();
    const CallFault first(Call::allocation, ENOMEM);
    die_message(status, 0, "text");
  };
  const std::string line = "Can't allocate memory for error message\n";
  for (const int status : {1, 6}) {
    EXPECT_EXIT(die(status), testing::ExitedWithCode(status), "^" + line + line + "$");
  }
}

// The C locale cannot represent the wide character, so formatting fails.
TEST_F(DieMessage, PrintsTheStartOfAMessageThatCannotBeFormatted) {
  int error = 0;
  const auto action = [&error] {
    errno = ENOENT;
    die_message(0, 0, "text %lc", static_cast<wint_t>(0x3b1));
    error = errno;
  };
  const Writes writes = written_by(action);
  EXPECT_EQ(error, ENOENT) << "the error of the caller, not that of formatting";
  ASSERT_EQ(writes.size(), 2U);
  EXPECT_TRUE(writes[0].second.starts_with("text")) << writes[0].second;
}

} // namespace

} // namespace tavek
