#include "driver/system_logs_fanout.h"

#if __has_include(<boost/process/v1/child.hpp>)
#include <boost/process/v1/child.hpp>
#include <boost/process/v1/exe.hpp>
#include <boost/process/v1/extend.hpp>
namespace bp = boost::process::v1;
#else
#include <boost/process/child.hpp>
#include <boost/process/exe.hpp>
#include <boost/process/extend.hpp>
namespace bp = boost::process;
#endif
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "driver/process_state.h"
#include "driver/system_log_category.h"

namespace tavek {

namespace {

using Words = std::vector<std::string>;

Words forwarded_words(const Options& options) {
  Words words;
  for (const char* name : {"period-type", "period"}) {
    if (options.has(name)) {
      words.insert(words.end(), {std::string("--") + name, options.text(name)});
    }
  }
  // These two have defaults, so every child gets them.
  words.insert(words.end(), {"--rot-count", std::to_string(options.number("rot-count")), "--anonymize-ip",
                             std::string(to_text(options.switch_value("anonymize-ip")))});
  return words;
}

bool is_executable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Resolves a bare name as a shell does, but searches the current directory first. The library's own search is not used
// because it accepts directories. A name that is not found is returned unchanged; the attempt to start it then fails
// with the right error.
std::string resolve_program(const std::string& program) {
  const char* path = std::getenv("PATH");
  if (program.find('/') != std::string::npos || is_executable(program) || path == nullptr) {
    return program;
  }
  std::istringstream directories(path);
  for (std::string directory; std::getline(directories, directory, ':');) {
    if (directory.empty()) {
      continue; // It means the current directory, which has already been searched.
    }
    std::string candidate = directory.append("/").append(program);
    if (is_executable(candidate)) {
      return candidate;
    }
  }
  return program;
}

// Starts one child, waits for it and returns its exit code. `command` becomes the argv of the child: our own invocation
// name, then the arguments. `program` is the file that the name resolves to. Both go directly to the executor because
// the library's own initialisers fail on an empty program or an empty word.
int run_child(const std::string& program, Words command) {
  std::vector<char*> argv;
  for (std::string& word : command) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  bp::child child(
      bp::exe = "/", // Required by the library; on_setup replaces it.
      bp::extend::on_setup =
          [&](auto& executor) {
            executor.exe = program.c_str();
            executor.cmd_line = argv.data();
          },
      // Without this a failed fork would yield an invalid child that still reports an exit code.
      bp::extend::on_fork_error =
          [](auto&, const std::error_code& error) { throw bp::process_error(error, "fork() failed"); });
  child.wait();
  return child.exit_code();
}

// Single blanks and no quoting: the message is for a person to read, not for a shell.
std::string failure_message(const Words& command, int exit_code) {
  std::string message = "Command '" + command.front();
  for (auto word = command.begin() + 1; word != command.end(); ++word) {
    message.append(" ").append(*word);
  }
  return message + "' finished with exitcode " + std::to_string(exit_code);
}

} // namespace

SystemLogsFanout::SystemLogsFanout(const std::string& program_path, const Options& options)
    : program_path_(program_path), program_(resolve_program(program_path)), forwarded_(forwarded_words(options)) {}

void SystemLogsFanout::run() const {
  restore_child_signal();
  for (const SystemLogCategory& category : system_log_categories()) {
    Words command{program_path_, std::string("--") + category.option};
    command.insert(command.end(), forwarded_.begin(), forwarded_.end());
    const int exit_code = run_child(program_, command);
    if (exit_code != 0) {
      throw std::runtime_error(failure_message(command, exit_code));
    }
  }
}

} // namespace tavek
