# Installs TIER into a folder of its own, builds an example against it and runs it:
#   cmake -D BUILD=<build folder> -D EXAMPLE=<source folder> -D PROGRAM=<name> -D WORK=<folder> -D GENERATOR=<generator> -P installed_tier.cmake
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --component tier --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${EXAMPLE} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${WORK}/prefix -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/${PROGRAM})

# Nothing but the entries is visible in the libraries.
foreach(library .a .so)
  file(GLOB file ${WORK}/prefix/lib*/libtier${library} ${WORK}/prefix/lib/*/libtier${library})
  if(library STREQUAL .so)
    set(dynamic -D)
  else()
    set(dynamic -g)
  endif()
  execute_process(COMMAND nm ${dynamic} --defined-only ${file} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL " [A-Za-z] [^\n]+" symbols "${symbols}")
  list(FILTER symbols EXCLUDE REGEX "^ [A-Za-z] X?TIER")
  if(symbols)
    message(FATAL_ERROR "visible beside the entries in ${file}: ${symbols}")
  endif()
endforeach()
