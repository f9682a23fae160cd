# Our own code compiles with these. The presets for development make a warning an error; a packager's newer compiler may
# warn of more.
add_library(tavek_warnings INTERFACE)
target_compile_options(tavek_warnings INTERFACE -Wall -Wextra -Wconversion -Wformat=2)
