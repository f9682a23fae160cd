# What makes a static program quicker to start, where the linker can do it.
include(CheckCXXSourceRuns)

# The relocations of a position-independent program in a form that is a thirtieth of the size. A linker may only warn of an
# option that it does not know, so a program linked with it has to run.
set(packed -Wl,-z,pack-relative-relocs)
set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie -Wl,--fatal-warnings ${packed})
check_cxx_source_runs("static int zero; static int* volatile at = &zero; int main() { return *at; }"
  TAVEK_PACKED_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(TAVEK_PACKED_RELOCATIONS)
  target_link_options(tavek_linkage INTERFACE ${packed})
endif()
