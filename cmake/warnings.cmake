# Warnings of every target of the project; the presets turn them into errors.
option(KELD_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)

add_library(keld_warnings INTERFACE)
target_compile_options(keld_warnings INTERFACE
  $<$<COMPILE_LANGUAGE:C,CXX>:-Wall -Wextra -Wshadow $<$<BOOL:${KELD_WARNINGS_AS_ERRORS}>:-Werror>>)
# GCC 12 sees an overlap where a std::string takes a literal (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(keld_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# Of src in addition: tables there are numbered from 1 by signed numbers, which need no cast.
add_library(keld_source_warnings INTERFACE)
target_compile_options(keld_source_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wsign-conversion>)
target_link_libraries(keld_source_warnings INTERFACE keld_warnings)
