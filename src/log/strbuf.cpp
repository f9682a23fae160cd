#include "log/strbuf.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tavek {

namespace {

constexpr std::size_t kStep = 80;

// Adds `more` to `sum`. Returns false on overflow.
bool add(std::size_t& sum, std::size_t more) {
  return !__builtin_add_overflow(sum, more, &sum);
}

} // namespace

char* strbuf_init(char** text, std::size_t* room) {
  if (*text != nullptr) {
    return *text;
  }
  *room = kStep;
  auto* fresh = static_cast<char*>(malloc(kStep));
  if (fresh == nullptr) {
    errno = ENOMEM;
    return nullptr;
  }
  fresh[0] = '\0';
  *text = fresh;
  *room = kStep - 1;
  return fresh;
}

char* strbuf_reserve(char** text, std::size_t* room, std::size_t n) {
  if (*room >= n) {
    return *text;
  }
  const std::size_t growth = std::max(n - *room, kStep);
  std::size_t size = strlen(*text) + 1;
  if (!add(size, *room) || !add(size, growth)) {
    errno = ERANGE;
    return nullptr;
  }
  auto* larger = static_cast<char*>(realloc(*text, size));
  if (larger == nullptr) {
    errno = ENOMEM;
    return nullptr;
  }
  *text = larger;
  *room += growth;
  return larger;
}

char* strbuf_append(char** text, std::size_t* room, const char* string) {
  const std::size_t length = strlen(string);
  if (strbuf_init(text, room) == nullptr || strbuf_reserve(text, room, length) == nullptr) {
    return nullptr;
  }
  memcpy(*text + strlen(*text), string, length + 1);
  *room -= length;
  return *text;
}

char* strbuf_printf(char** text, std::size_t* room, const char* format, ...) {
  va_list args;
  va_start(args, format);
  char* result = strbuf_vprintf(text, room, format, args);
  va_end(args);
  return result;
}

char* strbuf_vprintf(char** text, std::size_t* room, const char* format, va_list args) {
  if (strbuf_init(text, room) == nullptr) {
    return nullptr;
  }
  const std::size_t used = strlen(*text);
  va_list again;
  va_copy(again, args);
  int added = vsnprintf(*text + used, *room + 1, format, args);
  if (added >= 0 && static_cast<std::size_t>(added) >= *room + 1) {
    const bool grown = strbuf_reserve(text, room, static_cast<std::size_t>(added)) != nullptr;
    added = grown ? vsnprintf(*text + used, *room + 1, format, again) : -1;
  }
  va_end(again);
  if (added < 0 || static_cast<std::size_t>(added) > *room) {
    (*text)[used] = '\0';
    return nullptr;
  }
  *room -= static_cast<std::size_t>(added);
  return *text;
}

} // namespace tavek
