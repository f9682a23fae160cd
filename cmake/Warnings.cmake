# All our own code except the scanner's rules is compiled with these flags, and a warning is an error.
add_library(tavek_warnings INTERFACE)
target_compile_options(tavek_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wformat=2 -Werror)
