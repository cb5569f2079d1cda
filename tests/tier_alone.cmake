# Configures TIER alone, as somebody without MUMPS does, and looks at what its one target would build:
#   cmake -D SOURCE=<project> -D WORK=<folder> -P tier_alone.cmake
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${WORK} -DKELD_ONLY_TIER=ON -DBUILD_TESTING=OFF
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${WORK}/CMakeCache.txt looked_for REGEX "^(MUMPS|GTest|benchmark)")
if(looked_for)
  message(FATAL_ERROR "looked for what TIER doesn't need: ${looked_for}")
endif()

execute_process(COMMAND ninja -C ${WORK} -t commands tier_component OUTPUT_VARIABLE steps COMMAND_ERROR_IS_FATAL ANY)
set(expected libtier.a libtier.so tier.f90)
find_program(FORTRAN gfortran)
if(FORTRAN)
  list(APPEND expected tier_fortran)
endif()
foreach(product IN LISTS expected)
  if(NOT steps MATCHES "${product}")
    message(FATAL_ERROR "the target tier_component doesn't make ${product}")
  endif()
endforeach()
if(steps MATCHES "src/model|_test.cpp")
  message(FATAL_ERROR "the target tier_component makes more than TIER")
endif()
