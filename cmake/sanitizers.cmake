# Sanitizers and coverage, chosen by preset; they hold for every target.
set(KELD_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")
option(KELD_COVERAGE "Count executed lines" OFF)
option(KELD_FUZZ "Build the libFuzzer targets (clang)" OFF)

if(KELD_SANITIZE)
  add_compile_options(-fsanitize=${KELD_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KELD_SANITIZE})
  # Indices of tables are checked too, also in builds that are optimised.
  add_compile_options(-UNDEBUG)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
if(KELD_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
