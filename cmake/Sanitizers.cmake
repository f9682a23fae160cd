# Sanitizers and coverage change both the compile options and the link options of every target.
if(TAVEK_SANITIZERS)
  add_compile_options(-fsanitize=${TAVEK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVEK_SANITIZERS})
endif()

if(TAVEK_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
