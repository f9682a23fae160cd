# Makes a static program start faster if the linker and the C library support this.
include(CheckCXXSourceCompiles)

# Packed relocations of a position-independent program take a thirtieth of the space of ordinary ones. The linker and
# the C library must support them. An older linker only warns about the unknown option, so the check makes warnings
# fatal. A C library before glibc 2.36 does not apply packed relocations, so the program would crash.
set(packed -Wl,-z,pack-relative-relocs)
set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie -Wl,--fatal-warnings ${packed})
check_cxx_source_compiles("
  #include <climits>
  #if !defined __GLIBC_PREREQ || !__GLIBC_PREREQ(2, 36)
  #error The C library does not apply packed relocations.
  #endif
  int main() {}"
  TAVEK_PACKED_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(TAVEK_PACKED_RELOCATIONS)
  target_link_options(tavek_linkage INTERFACE ${packed})
endif()
