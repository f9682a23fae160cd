#include "runtime_conf/runtime_conf_file.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "log/log.h"

namespace tavek {

namespace {

bool is_space(char c) {
  return isspace(static_cast<unsigned char>(c)) != 0;
}
bool is_name_character(char c) {
  return isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}
bool ends_line(char c) {
  return c == '\0' || c == '#';
}

char* skip_space(char* text) {
  while (is_space(*text)) {
    ++text;
  }
  return text;
}

char* skip_name(char* text) {
  while (is_name_character(*text)) {
    ++text;
  }
  return text;
}

void expected_space(const char* line) {
  // This message also reports a line that does not start with a name, because the remedy is the same.
  log_state().log_hook(kQuietLevel, "Invalid variable definition %s\nExpected a space after variable name\n", line);
}

void expected_value(const char* line) {
  log_state().log_hook(kQuietLevel, "Invalid variable definition %s\nExpected a value", line);
}

// Returns the end of a value. In a run of white space, the characters set and clear `mark` in turn; any other character
// clears it. So trailing white space, including the newline, loses one character if its length is odd and none if it
// is even. Existing files with trailing blanks depend on this, so it must not change.
char* value_end(char* value) {
  char* mark = nullptr;
  char* at = value + 1;
  for (; !ends_line(*at); ++at) {
    mark = is_space(*at) && mark == nullptr ? at : nullptr;
  }
  return mark != nullptr ? mark : at;
}

// Parses one line in place. Returns 0, even for a malformed line, or -1 with errno set if there is no memory.
int read_line(char* line, RuntimeConf* store) {
  char* name = skip_space(line);
  if (ends_line(*name)) {
    return 0;
  }
  char* name_end = skip_name(name);
  if (name_end == name || !is_space(*name_end)) {
    expected_space(name);
    return 0;
  }
  char* value = skip_space(name_end);
  if (ends_line(*value)) {
    expected_value(name);
    return 0;
  }
  *value_end(value) = '\0';
  *name_end = '\0';
  return runtime_conf_set(name, value, store);
}

// Returns 0 at the end of the file, 1 on a read error and -1 if there is no memory for a definition; errno is set.
int read_lines(FILE* file, RuntimeConf* store) {
  char* line = nullptr;
  std::size_t size = 0;
  int result = 0;
  while (result == 0 && getdelim(&line, &size, '\n', file) != -1) {
    result = read_line(line, store);
  }
  if (result == 0 && (ferror(file) != 0 || feof(file) == 0)) {
    result = 1;
  }
  const int error = errno;
  free(line);
  errno = error;
  return result;
}

// Opens the file for reading. Without O_NONBLOCK, opening a FIFO would wait for a writer. A file that is neither a
// regular file nor a directory may never end, so /dev/null is opened instead.
FILE* open_file(const char* path) {
  const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  int fd = open(path, flags);
  struct stat status {};
  if (fd != -1 && fstat(fd, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    close(fd);
    fd = open("/dev/null", flags);
  }
  FILE* file = fd != -1 ? fdopen(fd, "r") : nullptr;
  if (file == nullptr && fd != -1) {
    const int error = errno;
    close(fd);
    errno = error;
  }
  return file;
}

int read_failed(int error) {
  log_state().log_hook(kQuietLevel, "Unable to read configuration file: %s", strerror(error));
  errno = error;
  return -1;
}

} // namespace

int runtime_conf_read_file(const char* path, RuntimeConf* store) {
  if (runtime_conf_reserve(store) == -1) {
    return -1;
  }
  FILE* file = open_file(path);
  if (file == nullptr) {
    const int error = errno;
    log_state().log_hook(kQuietLevel, "unable to open configuration file %s: %s\n", path, strerror(error));
    errno = error;
    return -1;
  }
  const int result = read_lines(file, store);
  const int error = errno;
  fclose(file);
  if (result == -1) {
    errno = error;
    return -1;
  }
  runtime_conf_sort(store);
  return result == 0 ? 0 : read_failed(error);
}

} // namespace tavek
