#pragma once

// Messages that a tool prints before it exits: on both standard streams, prefixed with the program's name.

#include <cstdarg>

namespace tavek {

/// Prints `text` on standard error and on standard output. If `program_path` is set, its base name and ": " come first.
/// A newline is added unless the text ends with one. Exits with `status` if that is not 0, otherwise returns 0. `flags`
/// is unused.
int print_message(const char* text, int status, int flags = 0);

/// Formats a message and prints it with print_message(). If errno is not 0 on entry, appends
/// "\nSystem error N: TEXT" if the message and this text together fit in 4096 bytes. Returns only if `status` is 0.
/// `flags` is unused.
void die_message(int status, int flags, const char* format, ...) __attribute__((format(printf, 3, 4)));
void vdie_message(int status, int flags, const char* format, va_list args) __attribute__((format(printf, 3, 0)));

} // namespace tavek
