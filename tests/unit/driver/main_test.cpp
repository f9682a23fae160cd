#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "log/log.h"
#include "unit/driver/driver_run.h"

int tool_main(int argc, char** argv);

namespace tavek {

namespace {

// Each run has a process of its own: the entry point changes what it does with signals.
class Main : public DriverRun {
protected:
  [[noreturn]] static void exit_with_status_of(std::vector<std::string> words) {
    const CommandLine line(std::move(words));
    std::exit(tool_main(line.argc(), const_cast<char**>(line.argv())));
  }
};

TEST_F(Main, ReturnsZeroWhenAllWentWell) {
  EXPECT_EXIT(exit_with_status_of({"tool", target, "keep"}), testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(content_of(target).substr(0, 11), "#ATTENTION!");
}

TEST_F(Main, PrintsWhatFailedAndReturnsOne) {
  EXPECT_EXIT(exit_with_status_of({"tool", "--bogus"}), testing::ExitedWithCode(1),
              "^unrecognised option '--bogus'\n$");
}

TEST_F(Main, ReturnsTwoForAnErrorOfTheScanner) {
  std::filesystem::create_directory(target);
  EXPECT_EXIT(exit_with_status_of({"tool", target, "keep"}), testing::ExitedWithCode(2),
              "^input in flex scanner failed\n$");
}

TEST_F(Main, OpensTheStandardStreamsThatAreMissing) {
  const auto run_without_streams = [] {
    char name[] = "tool";
    char option[] = "--bogus";
    char* words[] = {name, option, nullptr};
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    tool_main(2, words);
    const bool open = fcntl(STDIN_FILENO, F_GETFD) != -1 && fcntl(STDOUT_FILENO, F_GETFD) != -1;
    std::exit(open ? EXIT_SUCCESS : EXIT_FAILURE);
  };
  EXPECT_EXIT(run_without_streams(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(Main, MessagesCarryTheNameThatItWasStartedBy) {
  const auto run_and_look = [] {
    char name[] = "/a/tool";
    char option[] = "--bogus";
    char* words[] = {name, option, nullptr};
    tool_main(2, words);
    std::exit(log_state().program_path == name ? EXIT_SUCCESS : EXIT_FAILURE);
  };
  EXPECT_EXIT(run_and_look(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

} // namespace

} // namespace tavek
