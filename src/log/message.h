#pragma once

// Messages of a tool that is about to end: printed on both standard streams under the program's name.

#include <cstdarg>

namespace tavek {

/// Prints `text` on standard error and on standard output, each with the base name of `program_path` and ": " in front
/// when a program path is set, and with a newline unless the text ends with one. Exits with `status` when it is not 0,
/// otherwise returns 0. `flags` is unused.
int print_message(const char* text, int status, int flags = 0);

/// Formats a message and prints it with print_message, followed by "\nSystem error N: TEXT" when errno was set on
/// entry. Does not return when `status` is not 0. `flags` is passed along unused. A message that nearly fills 4096
/// bytes, or more, is printed without the system error.
void die_message(int status, int flags, const char* format, ...) __attribute__((format(printf, 3, 4)));
void vdie_message(int status, int flags, const char* format, va_list args) __attribute__((format(printf, 3, 0)));

} // namespace tavek
