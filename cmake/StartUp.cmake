# A link option that makes a static program start faster, if the linker supports it.
include(CheckCXXSourceRuns)

# The option packs the relocations of a position-independent program into a thirtieth of their size. A linker that does
# not know the option may only print a warning, so the check links a program with it and runs the program.
set(packed -Wl,-z,pack-relative-relocs)
set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie -Wl,--fatal-warnings ${packed})
check_cxx_source_runs("static int zero; static int* volatile at = &zero; int main() { return *at; }"
  TAVEK_PACKED_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(TAVEK_PACKED_RELOCATIONS)
  target_link_options(tavek_linkage INTERFACE ${packed})
endif()
