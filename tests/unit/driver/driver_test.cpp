#include "driver/driver.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "log/log.h"
#include "runtime_conf/runtime_conf.h"
#include "support/call_fault.h"
#include "support/configured_file.h"
#include "support/temporary_directory.h"
#include "support/thrown.h"

int tool_main(int argc, char** argv);

namespace tavek {

namespace {

// Complete runs of the tool in this process. The cases in tests/cases test what a user sees of a run.
class Driver : public testing::Test {
protected:
  void run_tool(std::vector<std::string> words) const {
    words.insert(words.begin(), directory / "tool");
    std::vector<const char*> argv(words.size() + 1);
    std::transform(words.begin(), words.end(), argv.begin(), [](const std::string& word) { return word.c_str(); });
    run(static_cast<int>(words.size()), argv.data());
  }

  const TemporaryDirectory directory;
  const std::string target = directory.write("target", "/a {\n\trotate 9\n}\n");
  const std::string vhosts = directory / "vhosts";
  const std::string configuration = directory.write("oru.conf", "HTTPD_VHOSTS_D " + vhosts + "\n");
  const ConfiguredFile configured{configuration};
};

TEST_F(Driver, LoadsTheConfigurationBeforeItParsesTheCommandLine) {
  EXPECT_NE(thrown_by([&] { run_tool({"--bogus"}); }), "nothing thrown");
  std::filesystem::remove(configuration);
  EXPECT_STREQ(runtime_conf_file_value(HTTPD_VHOSTS_D), vhosts.c_str());
}

TEST_F(Driver, GivesTheFileMode0644IfNoRandomNameIsAvailable) {
  using Words = std::vector<std::string>;
  for (const Words& words : {Words{"-K", "--nginx-logs", "--rot-count=4", target}, Words{target, "keep"}}) {
    const mode_t before = umask(077);
    const CallFault fault(Call::mkostemp, EEXIST);
    run_tool(words);
    umask(before);
    EXPECT_EQ(mode_of(target), 0644U) << words.front();
  }
}

TEST_F(Driver, ReplacesNothingIfATerminationSignalArrivesBeforeTheRename) {
  const auto receive = [&](int signal) {
    constexpr rlimit no_core{};
    setrlimit(RLIMIT_CORE, &no_core);
    ::signal(signal, SIG_DFL);
    const CallFault arrival(Call::fsync, [signal] { return raise(signal); });
    run_tool({"-K", "--nginx-logs", "--rot-count=4", target});
  };
  for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT}) {
    EXPECT_EXIT(receive(signal), testing::KilledBySignal(signal), "^$") << signal;
    EXPECT_EQ(content_of(target), "/a {\n\trotate 9\n}\n") << signal;
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"oru.conf", "target"})) << signal;
  }
}

TEST_F(Driver, ReportsARemovalThatMayNotSurviveAPowerLoss) {
  const CallFault fault(Call::fsync, EIO);
  EXPECT_EQ(thrown_by([&] {
              run_tool({target, "off"});
            }),
            target + " is removed, but this may not survive a power loss: Input/output error");
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(Driver, SetsTheFileCreationMaskTo022) {
  const mode_t before = umask(0);
  run_tool({target, "keep"});
  EXPECT_EQ(umask(before), 022U);
}

// The entry point runs in a process of its own, because it ignores signals.
class Main : public testing::Test {
protected:
  static int run_with_an_unknown_option() {
    char option[] = "--bogus";
    char* words[] = {name, option, nullptr};
    return tool_main(2, words);
  }

  static inline char name[] = "/a/tool";
};

TEST_F(Main, SetsTheProgramPathForFatalMessages) {
  const auto run_and_check = [] {
    const bool failed = run_with_an_unknown_option() == EXIT_FAILURE;
    std::exit(failed && log_state().program_path == name ? EXIT_SUCCESS : EXIT_FAILURE);
  };
  EXPECT_EXIT(run_and_check(), testing::ExitedWithCode(EXIT_SUCCESS), "^unrecognised option '--bogus'\n$");
}

TEST_F(Main, OpensMissingStandardStreams) {
  const auto run_and_check = [] {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      close(fd);
    }
    run_with_an_unknown_option();
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      if (fcntl(fd, F_GETFD) == -1) {
        std::_Exit(EXIT_FAILURE);
      }
    }
    std::_Exit(EXIT_SUCCESS);
  };
  EXPECT_EXIT(run_and_check(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

} // namespace

} // namespace tavek
