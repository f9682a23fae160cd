#include "driver/system_logs_fanout.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <system_error>
#include <unistd.h>

#include "support/call_fault.h"
#include "support/temporary_directory.h"
#include "unit/driver/command_line.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;

constexpr const char* kCategories[] = {"apache", "nginx", "tavek", "fail2ban", "modsecurity"};

// The record of a run for all categories, each with these words, every word in brackets.
std::string record_of_all(const std::string& words) {
  std::string record;
  for (const std::string category : kCategories) {
    record += "[--" + category + "-logs]" + words + "\n";
  }
  return record;
}

// The tool is a script that records the words it is started with. Its name may be sought in PATH, so the test works in
// a directory of its own.
class SystemLogsFanoutTest : public testing::Test {
protected:
  SystemLogsFanoutTest() {
    if (const char* path = std::getenv("PATH")) {
      path_before_ = path;
    }
    std::filesystem::create_directory(directory / "here");
    std::filesystem::current_path(directory / "here");
  }
  ~SystemLogsFanoutTest() override {
    std::filesystem::current_path(directory_before_);
    setenv("PATH", path_before_.c_str(), 1);
  }

  // Makes an executable tool that goes on with `rest` once it has recorded its words; returns its path.
  std::string make_tool(const std::string& name, const std::string& rest = "") const {
    const std::string path = directory.write(name, "#!/bin/sh\nfor word; do printf '[%s]' \"$word\"; done >>" + record +
                                                       "\necho >>" + record + "\n" + rest);
    std::filesystem::permissions(path, std::filesystem::perms{0755});
    return path;
  }

  std::string make_directory(const std::string& name) const {
    std::filesystem::create_directory(directory / name);
    return directory / name;
  }

  std::string recorded() const { return content_of(record); }

  // What the run throws, or "done".
  static std::string complaint(const std::string& program, const Words& words) {
    try {
      SystemLogsFanout(program, options_of(words)).run();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "done";
  }

  // The error number of a child that cannot be made.
  static std::optional<int> error_of(const std::string& program) {
    try {
      SystemLogsFanout(program, options_of({})).run();
    } catch (const std::system_error& error) {
      return error.code().value();
    }
    return std::nullopt;
  }

  const TemporaryDirectory directory;
  const std::string record = directory / "record";

private:
  const std::filesystem::path directory_before_ = std::filesystem::current_path();
  std::string path_before_;
};

TEST_F(SystemLogsFanoutTest, RunsTheToolOnceForEachCategoryInOrder) {
  EXPECT_EQ(complaint(make_tool("tool"), {}), "done");
  EXPECT_EQ(recorded(), record_of_all("[--rot-count][-1][--anonymize-ip][keep]"));
}

TEST_F(SystemLogsFanoutTest, ForwardsPeriodAndRotationInAFixedOrder) {
  EXPECT_EQ(complaint(make_tool("tool"), {"--anonymize-ip=true", "--rot-count=007", "--period=daily",
                                          "--period-type=by_time", "--system-logs"}),
            "done");
  EXPECT_EQ(recorded(), record_of_all("[--period-type][by_time][--period][daily][--rot-count][7][--anonymize-ip][on]"));
}

TEST_F(SystemLogsFanoutTest, ForwardsNothingElse) {
  EXPECT_EQ(complaint(make_tool("tool"), {"example.com", "on", "--compress=on", "--email=a@b", "-K", "--nginx-logs",
                                          "--anonymize-ip=off"}),
            "done");
  EXPECT_EQ(recorded(), record_of_all("[--rot-count][-1][--anonymize-ip][off]"));
}

TEST_F(SystemLogsFanoutTest, ForwardsWordsUnchanged) {
  EXPECT_EQ(complaint(make_tool("tool"), {"--period-type", "", "--period", " 1 \"0' $M*;\\\t"}), "done");
  EXPECT_EQ(recorded(),
            record_of_all("[--period-type][][--period][ 1 \"0' $M*;\\\t][--rot-count][-1][--anonymize-ip][keep]"));
}

TEST_F(SystemLogsFanoutTest, StopsAtTheFirstChildThatFails) {
  const std::string tool = make_tool("tool", "test \"$1\" != --nginx-logs || exit 3\n");
  EXPECT_EQ(complaint(tool, {}),
            "Command '" + tool + " --nginx-logs --rot-count -1 --anonymize-ip keep' finished with exitcode 3");
  EXPECT_EQ(recorded(), "[--apache-logs][--rot-count][-1][--anonymize-ip][keep]\n"
                        "[--nginx-logs][--rot-count][-1][--anonymize-ip][keep]\n");
}

TEST_F(SystemLogsFanoutTest, NamesTheWordsOfAFailureWithoutQuoting) {
  const std::string tool = make_tool("a tool", "exit 255\n");
  EXPECT_EQ(complaint(tool, {"--period-type", "by size", "--period", ""}),
            "Command '" + tool +
                " --apache-logs --period-type by size --period  --rot-count -1 --anonymize-ip keep'"
                " finished with exitcode 255");
}

TEST_F(SystemLogsFanoutTest, TellsTheSignalThatKilledAChild) {
  const std::string tool = make_tool("tool", "kill -9 $$\n");
  EXPECT_EQ(complaint(tool, {}),
            "Command '" + tool + " --apache-logs --rot-count -1 --anonymize-ip keep' finished with exitcode 9");
}

TEST_F(SystemLogsFanoutTest, ChildrenInheritEnvironmentAndDirectory) {
  setenv("TAVEK_TEST_MARK", "inherited", 1);
  EXPECT_EQ(
      complaint(make_tool("tool", "printf '%s %s\\n' \"$TAVEK_TEST_MARK\" \"$PWD\" >>" + record + "\nexit 1\n"), {}),
      "Command '" + directory / "tool" + " --apache-logs --rot-count -1 --anonymize-ip keep' finished with exitcode 1");
  unsetenv("TAVEK_TEST_MARK");
  EXPECT_TRUE(recorded().ends_with("\ninherited " + directory / "here" + "\n")) << recorded();
}

TEST_F(SystemLogsFanoutTest, WaitsForItsChildrenThoughTheCallerIgnoresThem) {
  const sighandler_t before = signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(complaint(make_tool("tool"), {}), "done");
  signal(SIGCHLD, before);
}

TEST_F(SystemLogsFanoutTest, AMissingProgramIsAnErrorOfTheSystem) {
  EXPECT_EQ(error_of(directory / "tool"), ENOENT);
  EXPECT_EQ(error_of("./tool"), ENOENT);
  EXPECT_EQ(error_of(""), ENOENT);
}

TEST_F(SystemLogsFanoutTest, AProgramThatIsNotExecutableIsAnErrorOfTheSystem) {
  EXPECT_EQ(error_of(directory.write("tool", "#!/bin/sh\n")), EACCES);
  EXPECT_EQ(error_of(directory.path()), EACCES);
}

TEST_F(SystemLogsFanoutTest, AFailedForkIsAnErrorOfTheSystem) {
  const std::string tool = make_tool("tool");
  const CallFault fault(Call::fork, EAGAIN);
  EXPECT_EQ(complaint(tool, {}), "fork() failed: Resource temporarily unavailable");
  EXPECT_EQ(recorded(), "");
}

TEST_F(SystemLogsFanoutTest, FindsABareNameInAnyDirectoryOfThePath) {
  for (const std::string place : {"first", "middle", "last"}) {
    make_directory(place);
  }
  setenv("PATH", (directory / "first" + "::" + directory / "middle" + ":/missing:" + directory / "last").c_str(), 1);
  for (const std::string place : {"first", "middle", "last"}) {
    std::filesystem::remove(record);
    make_tool(place + "/tool-of-" + place);
    EXPECT_EQ(complaint("tool-of-" + place, {}), "done") << place;
    EXPECT_EQ(recorded(), record_of_all("[--rot-count][-1][--anonymize-ip][keep]")) << place;
  }
}

TEST_F(SystemLogsFanoutTest, FindsABareNameInTheCurrentDirectoryFirst) {
  setenv("PATH", make_directory("first").c_str(), 1);
  make_tool("first/tool", "exit 1\n");
  make_tool("here/tool");
  EXPECT_EQ(complaint("tool", {}), "done");
}

TEST_F(SystemLogsFanoutTest, TakesTheFirstExecutableFileOfThePath) {
  setenv("PATH",
         (make_directory("one") + ":" + make_directory("two") + ":" + make_directory("three") + ":" +
          make_directory("four"))
             .c_str(),
         1);
  make_directory("here/tool");
  make_directory("one/tool");
  directory.write("two/tool", "not executable");
  make_tool("three/tool");
  make_tool("four/tool", "exit 1\n");
  EXPECT_EQ(complaint("tool", {}), "done");
}

TEST_F(SystemLogsFanoutTest, ABareNameThatIsNowhereIsAnErrorOfTheSystem) {
  setenv("PATH", make_directory("first").c_str(), 1);
  EXPECT_EQ(error_of("tool"), ENOENT);
  unsetenv("PATH");
  EXPECT_EQ(error_of("tool"), ENOENT);
}

// The name in front of the complaint of a child that does not know its words.
TEST_F(SystemLogsFanoutTest, TellsTheChildTheNameThatItWasStartedByItself) {
  setenv("PATH", make_directory("first").c_str(), 1);
  std::filesystem::create_symlink("/bin/cat", directory / "first/tool");
  testing::internal::CaptureStderr();
  const std::string message = complaint("tool", {});
  const std::string complaint_of_child = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(complaint_of_child.starts_with("tool: ")) << complaint_of_child;
  EXPECT_EQ(message, "Command 'tool --apache-logs --rot-count -1 --anonymize-ip keep' finished with exitcode 1");
}

} // namespace

} // namespace tavek
