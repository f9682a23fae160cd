#include "log/message.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/base_name.h"
#include "log/log.h"

namespace tavek {

namespace {

constexpr std::size_t kMessageSize = 4096;

// A string on the heap and the size of its block. The function that prints it frees it.
struct MessageBuffer {
  char* text;
  std::size_t size;
};

void print_on(FILE* stream, const char* text) {
  const char* program_path = log_state().program_path;
  if (program_path != nullptr) {
    fprintf(stream, "%s: ", base_name(program_path));
  }
  fputs(text, stream);
  const std::size_t length = strlen(text);
  if (length == 0 || text[length - 1] != '\n') {
    fputc('\n', stream);
  }
  fflush(stream);
}

// Formats into the block and enlarges it for a long message. If there is no memory for that, the message is truncated.
__attribute__((format(printf, 2, 0))) void format_message(MessageBuffer& buffer, const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int length = vsnprintf(buffer.text, buffer.size, format, args);
  if (length >= 0 && static_cast<std::size_t>(length) >= buffer.size) {
    const std::size_t needed = static_cast<std::size_t>(length) + 1;
    if (auto* larger = static_cast<char*>(realloc(buffer.text, needed))) {
      buffer = {larger, needed};
      vsnprintf(buffer.text, buffer.size, format, again);
    }
  }
  va_end(again);
}

// Appends the system error if it fits into the block. Otherwise it is omitted: the message itself is complete, and it
// is what the reader needs most.
void append_system_error(MessageBuffer& buffer, int error) {
  const std::size_t length = strlen(buffer.text);
  const std::size_t space = buffer.size - length;
  const int needed = snprintf(buffer.text + length, space, "\nSystem error %d: %s", error, strerror(error));
  if (needed >= 0 && static_cast<std::size_t>(needed) < space) {
    return;
  }
  buffer.text[length] = '\0';
}

} // namespace

int print_message(const char* text, int status, int /*flags*/) {
  print_on(stderr, text);
  print_on(stdout, text);
  if (status != 0) {
    exit(status);
  }
  return 0;
}

void die_message(int status, int flags, const char* format, ...) {
  va_list args;
  va_start(args, format);
  vdie_message(status, flags, format, args);
  va_end(args);
}

void vdie_message(int status, int flags, const char* format, va_list args) {
  const int error = errno;
  MessageBuffer buffer{static_cast<char*>(malloc(kMessageSize)), kMessageSize};
  if (buffer.text == nullptr) {
    print_message("Can't allocate memory for error message", status, flags);
    return;
  }
  format_message(buffer, format, args);
  errno = error;
  if (error != 0) {
    append_system_error(buffer, error);
  }
  print_message(buffer.text, status, flags);
  free(buffer.text);
}

} // namespace tavek
