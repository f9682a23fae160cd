# The switches of a build; the presets set them.
option(TAVEK_STATIC "Link the program statically, as a position-independent executable" OFF)
option(TAVEK_HARDEN "Build with the hardening flags and link options of a release" OFF)
option(TAVEK_BUILD_TESTS "Build the unit and property tests" ON)
option(TAVEK_TIDY "Run clang-tidy on every translation unit of the program" OFF)
option(TAVEK_TIDY_TESTS "Run clang-tidy on the tests as well" OFF)
option(TAVEK_FUZZ "Build the fuzz targets, which requires clang" OFF)
set(TAVEK_SANITIZERS "" CACHE STRING "Sanitizers to build with, comma separated (address,undefined)")
option(TAVEK_COVERAGE "Count the lines and branches that run" OFF)
