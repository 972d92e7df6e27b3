# Installs the build into a folder of its own, builds the project beside this file against what was installed there, and
# runs it. The sources of this tree are out of the consumer's sight.
set(work ${BUILD_DIR}/installed_package)
file(REMOVE_RECURSE ${work})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(result)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${work}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/consumer -B ${work}/build -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Release
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${work}/prefix)
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/consumer)
