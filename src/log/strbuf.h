#pragma once

// Growable strings: a heap text and the room that is left in it, held by the caller.
//
// `text` points to a pointer that is null before first use and to a NUL-terminated text afterwards, which the caller
// frees with free(). `room` is the number of characters that can still be added without growing, the terminating NUL
// not counted; it is exact after each call. Each function returns the text, which may have moved, or null with errno
// set to ENOMEM, or to ERANGE when a size overflows; the old text and its room then stay valid.

#include <cstdarg>
#include <cstddef>

namespace tavek {

/// Makes an empty text with room for 79 characters when there is none yet.
char* strbuf_init(char** text, std::size_t* room);

/// Makes room for at least `n` more characters, growing by 80 or by what lacks, whichever is larger.
char* strbuf_reserve(char** text, std::size_t* room, std::size_t n);

/// Adds `string` at the end.
char* strbuf_append(char** text, std::size_t* room, const char* string);

/// Adds the formatted text at the end; null also when the format cannot be carried out.
char* strbuf_printf(char** text, std::size_t* room, const char* format, ...) __attribute__((format(printf, 3, 4)));
char* strbuf_vprintf(char** text, std::size_t* room, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

} // namespace tavek
