# Program_options is a compiled library; Process (version 1 interface) is a header-only library.
if(TAVEK_STATIC)
  set(Boost_USE_STATIC_LIBS ON)
endif()
find_package(Boost 1.74 REQUIRED COMPONENTS program_options)
