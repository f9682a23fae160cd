if(TAVEK_TIDY)
  find_program(CLANG_TIDY NAMES clang-tidy-14 clang-tidy REQUIRED)
endif()

# Runs clang-tidy on every file of one of our targets.
function(tavek_tidy target)
  if(TAVEK_TIDY)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${CLANG_TIDY};--quiet")
  endif()
endfunction()
