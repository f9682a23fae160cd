# What the presets for development switch on to find errors: warnings, clang-tidy, sanitizers and coverage.

# All our own code except the scanner's rules is compiled with these flags. Only the presets for development treat
# warnings as errors, because a packager may use a newer compiler that prints more of them.
add_library(tavek_warnings INTERFACE)
target_compile_options(tavek_warnings INTERFACE -Wall -Wextra -Wconversion -Wformat=2)

# Sanitizers and coverage change both the compile options and the link options of every target.
if(TAVEK_SANITIZERS)
  add_compile_options(-fsanitize=${TAVEK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVEK_SANITIZERS})
endif()
if(TAVEK_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

if(TAVEK_TIDY)
  find_program(CLANG_TIDY NAMES clang-tidy-14 clang-tidy REQUIRED)
endif()

# Runs clang-tidy on every file of one of our targets.
function(tavek_tidy target)
  if(TAVEK_TIDY)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${CLANG_TIDY};--quiet")
  endif()
endfunction()
