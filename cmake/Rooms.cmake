# A room is a folder of src, built as a library that links exactly the rooms it uses.

# tavek_room(NAME USES ROOM... SOURCES FILE...): an include of a room that is not listed fails the build, and so does a
# listed room that no file includes.
function(tavek_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "" "USES;SOURCES")
  list(TRANSFORM room_SOURCES PREPEND "${name}/")
  add_library(tavek_${name} STATIC ${room_SOURCES})
  target_include_directories(tavek_${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(tavek_${name} PRIVATE tavek_warnings tavek_hardening)
  tavek_tidy(tavek_${name})
  foreach(used IN LISTS room_USES)
    target_link_libraries(tavek_${name} PRIVATE tavek_${used})
  endforeach()

  add_custom_target(tavek_${name}_arrows VERBATIM
    COMMAND "${CMAKE_COMMAND}" "-DSRC=${CMAKE_CURRENT_SOURCE_DIR}" -DROOM=${name} "-DUSES=${room_USES}"
      -P "${PROJECT_SOURCE_DIR}/cmake/CheckArrows.cmake")
  add_dependencies(tavek_${name} tavek_${name}_arrows)
  set_target_properties(tavek_${name} PROPERTIES ROOM_USES "${room_USES}")
endfunction()

# tavek_scanner(TARGET RULES) builds one flex rule file as a separate object library, because generated code is compiled
# with most of the usual warnings but without our stricter ones.
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
