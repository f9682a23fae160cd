find_package(FLEX 2.6 REQUIRED)

# Builds one flex rule file as a separate object library, because generated code is compiled with most of the usual
# warnings but without our stricter ones.
function(tavek_scanner target rules)
  cmake_path(GET rules STEM stem)
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/${stem}.cpp")
  add_custom_command(
    OUTPUT "${generated}"
    COMMAND "${FLEX_EXECUTABLE}" --outfile=${generated} "${CMAKE_CURRENT_SOURCE_DIR}/${rules}"
    DEPENDS "${rules}"
    COMMENT "Generating ${stem}.cpp"
    VERBATIM)
  add_library(${target} OBJECT "${generated}")
  target_include_directories(${target} PRIVATE "${CMAKE_SOURCE_DIR}/src")
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wno-unused-function -Wno-sign-compare -Wno-unknown-warning-option)
  target_link_libraries(${target} PRIVATE tavek_hardening)
endfunction()
