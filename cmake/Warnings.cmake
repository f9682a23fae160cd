# All our own code except the scanner's rules is compiled with these flags. A warning is an error in the presets for
# development only: a packager's later compiler may warn of more.
add_library(tavek_warnings INTERFACE)
target_compile_options(tavek_warnings INTERFACE -Wall -Wextra -Wconversion -Wformat=2)
