# Warnings of every target of the project; the presets turn them into errors. Tables that are numbered by signed
# numbers take them without a cast, so that a change of sign is worth a warning.
option(KELD_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)

add_library(keld_warnings INTERFACE)
target_compile_options(keld_warnings INTERFACE
  $<$<COMPILE_LANGUAGE:C,CXX>:-Wall -Wextra -Wshadow $<$<BOOL:${KELD_WARNINGS_AS_ERRORS}>:-Werror>>
  $<$<COMPILE_LANGUAGE:CXX>:-Wsign-conversion>)
# GCC 12 sees an overlap where a std::string takes a literal (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(keld_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
