#include "driver/system_logs_fanout.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
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
  // Both options have defaults, so every child gets them.
  words.insert(words.end(), {"--rot-count", std::to_string(options.number("rot-count")), "--anonymize-ip",
                             std::string(to_text(options.switch_value("anonymize-ip")))});
  return words;
}

bool is_executable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Resolves a bare name as a shell does, but searches the current directory first. A name that is not found is returned
// unchanged; the attempt to start it then fails with the right error.
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

// Starts `program`, the file that our own invocation name resolves to, with the words of `command` as its argv. A
// failed fork reads like a failed exec.
pid_t start(const std::string& program, Words command) {
  std::vector<char*> argv;
  for (std::string& word : command) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "execve failed");
  }
  return child;
}

// Kills the child unless it has ended: a failure must leave no child behind that still edits files.
void kill_if_running(pid_t child) {
  if (waitpid(child, nullptr, WNOHANG) == 0) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }
}

// Waits for the child to end. Returns its exit status, or the number of the signal that killed it.
int wait_for(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (const int error = errno; error != EINTR) {
      kill_if_running(child);
      throw std::system_error(error, std::generic_category(), "wait error");
    }
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
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
    const int exit_code = wait_for(start(program_, command));
    if (exit_code != 0) {
      throw std::runtime_error(failure_message(command, exit_code));
    }
  }
}

} // namespace tavek
