#pragma once

// Growable strings: the caller keeps a pointer to the string and the room left in it.
//
// `*text` is null before first use. Later it points to a NUL-terminated string, which the caller frees with free().
// `*room` is the number of characters that fit without growing the string, excluding the terminating NUL; it is exact
// after each call. Each function returns the string, which may have moved. On failure it returns null with errno set to
// ENOMEM, or to ERANGE if a size overflows; an existing string and its room are then still valid.

#include <cstdarg>
#include <cstddef>

namespace tavek {

/// Creates an empty string with room for 79 characters unless there is already a string.
char* strbuf_init(char** text, std::size_t* room);

/// Makes room for at least `n` more characters. Grows by 80 or by the shortfall, whichever is larger.
char* strbuf_reserve(char** text, std::size_t* room, std::size_t n);

/// Appends `string`.
char* strbuf_append(char** text, std::size_t* room, const char* string);

/// Appends formatted text. Also returns null if formatting fails.
char* strbuf_printf(char** text, std::size_t* room, const char* format, ...) __attribute__((format(printf, 3, 4)));
char* strbuf_vprintf(char** text, std::size_t* room, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

} // namespace tavek
