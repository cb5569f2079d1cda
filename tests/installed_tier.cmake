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
