#include "log/message.h"

#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "support/call_fault.h"
#include "unit/log/fresh_log_state.h"
#include "unit/log/recorded_streams.h"

namespace tavek {

namespace {

using test::on_both_streams;
using test::Writes;
using test::written_by;

// What follows a message when errno is ENOENT.
std::string not_found() {
  return "\nSystem error 2: No such file or directory";
}

class PrintMessage : public test::FreshLogState {};

class DieMessage : public test::FreshLogState {
protected:
  /// What a message that ends nothing prints when errno is `error`.
  static Writes written(int error, const std::string& message) {
    return written_by([error, &message] {
      errno = error;
      die_message(0, 0, "%s", message.c_str());
    });
  }
};

// Lets a death test, which sees standard error only, see both streams in their order.
void join_streams() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST_F(PrintMessage, PrintsOnBothStreamsStandardErrorFirst) {
  EXPECT_EQ(written_by([] { print_message("text", 0); }), on_both_streams("text\n"));
}

TEST_F(PrintMessage, AddsNoNewlineToATextThatHasOne) {
  EXPECT_EQ(written_by([] { print_message("text\n", 0); }), on_both_streams("text\n"));
  EXPECT_EQ(written_by([] { print_message("\n", 0); }), on_both_streams("\n"));
  EXPECT_EQ(written_by([] { print_message("two\nlines", 0); }), on_both_streams("two\nlines\n"));
}

TEST_F(PrintMessage, EndsAnEmptyTextWithANewline) {
  EXPECT_EQ(written_by([] { print_message("", 0); }), on_both_streams("\n"));
}

TEST_F(PrintMessage, TakesTheTextLiterally) {
  EXPECT_EQ(written_by([] { print_message("%s%n", 0); }), on_both_streams("%s%n\n"));
}

TEST_F(PrintMessage, BeginsWithTheBaseNameOfTheProgram) {
  log_state().program_path = "/opt/oru/admin/sbin/tool";
  EXPECT_EQ(written_by([] { print_message("text\n", 0); }), on_both_streams("tool: text\n"));
  EXPECT_EQ(written_by([] { print_message("", 0); }), on_both_streams("tool: \n"));
}

TEST_F(PrintMessage, BeginsWithAProgramNameThatHasNoSlash) {
  log_state().program_path = "tool";
  EXPECT_EQ(written_by([] { print_message("text", 0); }), on_both_streams("tool: text\n"));
}

TEST_F(PrintMessage, ReturnsZeroWithStatusZero) {
  int result = -1;
  written_by([&result] { result = print_message("text", 0, 5); });
  EXPECT_EQ(result, 0);
}

TEST_F(PrintMessage, ExitsWithAnyOtherStatusAfterPrinting) {
  log_state().program_path = "/sbin/tool";
  EXPECT_EXIT((join_streams(), print_message("gone", 3)), testing::ExitedWithCode(3), "^tool: gone\ntool: gone\n$");
  EXPECT_EXIT((join_streams(), print_message("gone\n", 255, 1)), testing::ExitedWithCode(255),
              "^tool: gone\ntool: gone\n$");
}

TEST_F(DieMessage, PrintsTheFormattedMessageAloneWithoutASystemError) {
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

TEST_F(DieMessage, KeepsTheSystemErrorForItsCaller) {
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
  const auto die = [](int error) {
    join_streams();
    errno = error;
    die_message(4, 9, "no %s", "way");
  };
  EXPECT_EXIT(die(0), testing::ExitedWithCode(4), "^tool: no way\ntool: no way\n$");
  const std::string line = "tool: no way" + not_found() + "\n";
  EXPECT_EXIT(die(ENOENT), testing::ExitedWithCode(4), "^" + line + line + "$");
}

TEST_F(DieMessage, PrintsALongMessageWhole) {
  for (const std::size_t length : {4094U, 4095U, 4096U, 4097U, 20000U}) {
    const std::string message(length, 'm');
    EXPECT_EQ(written(0, message), on_both_streams(message + "\n")) << length;
  }
}

TEST_F(DieMessage, AppendsASystemErrorThatJustFits) {
  const std::string message(4095 - not_found().size(), 'm');
  EXPECT_EQ(written(ENOENT, message), on_both_streams(message + not_found() + "\n"));
}

TEST_F(DieMessage, LosesASystemErrorThatDoesNotFit) {
  for (const std::size_t length :
       {4096 - not_found().size(), std::size_t{4095}, std::size_t{4096}, std::size_t{9000}}) {
    const std::string message(length, 'm');
    EXPECT_EQ(written(ENOENT, message), on_both_streams(message + "\n")) << length;
  }
}

TEST_F(DieMessage, AllocatesOnceForAMessageOfUpTo4095Characters) {
  const CallFault second(Call::allocation, ENOMEM, 2);
  EXPECT_EQ(written(0, std::string(4095, 'm')), on_both_streams(std::string(4095, 'm') + "\n"));
}

TEST_F(DieMessage, CutsALongMessageWhenMemoryRunsOut) {
  const CallFault second(Call::allocation, ENOMEM, 2);
  EXPECT_EQ(written(ENOENT, std::string(5000, 'm')), on_both_streams(std::string(4095, 'm') + "\n"));
}

TEST_F(DieMessage, SaysSoWhenThereIsNoMemoryAtAll) {
  log_state().program_path = "tool";
  const CallFault first(Call::allocation, ENOMEM);
  EXPECT_EQ(written(ENOENT, "text"), on_both_streams("tool: Can't allocate memory for error message\n"));
}

TEST_F(DieMessage, ExitsWithItsStatusAlsoWithoutMemory) {
  const auto die = [] {
    join_streams();
    const CallFault first(Call::allocation, ENOMEM);
    die_message(6, 0, "text");
  };
  const std::string line = "Can't allocate memory for error message\n";
  EXPECT_EXIT(die(), testing::ExitedWithCode(6), "^" + line + line + "$");
}

// The wide character has no form in the C locale, so that the message cannot be formatted to its end.
TEST_F(DieMessage, SurvivesAFormatThatCannotBeCarriedOut) {
  int error = 0;
  const auto action = [&error] {
    errno = ENOENT;
    die_message(0, 0, "text %lc", static_cast<wint_t>(0x3b1));
    error = errno;
  };
  const Writes writes = written_by(action);
  EXPECT_EQ(error, ENOENT) << "the caller's, not that of the format";
  ASSERT_EQ(writes.size(), 2U);
  EXPECT_TRUE(writes[0].second.starts_with("text")) << writes[0].second;
}

} // namespace

} // namespace tavek
