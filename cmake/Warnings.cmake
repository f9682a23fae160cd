# All our own code except the scanner's rules is compiled with these flags. Only the presets for development treat
# warnings as errors, because a packager may use a newer compiler that prints more of them.
add_library(tavek_warnings INTERFACE)
target_compile_options(tavek_warnings INTERFACE -Wall -Wextra -Wconversion -Wformat=2)
