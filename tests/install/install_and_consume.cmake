# Installs the build into WORK_DIR/prefix, builds the consumer in CONSUMER_DIR against it, runs
# it (it writes a catalog with one packet) and lists that catalog with the installed ussctl.
cmake_minimum_required(VERSION 3.25)

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${what} failed (${code}):\n${out}${err}")
  endif()
  set(output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run("configuring the consumer" ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer
  -G ${GENERATOR} -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_BUILD_TYPE=Release)
run("building the consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)

set(catalog ${WORK_DIR}/catalog.db)
run("the consumer" ${WORK_DIR}/consumer/marlouss_consumer ${catalog})
if(NOT output STREQUAL "marlouss packets=1\n")
  message(FATAL_ERROR "the consumer printed: ${output}")
endif()

run("ussctl --help" ${prefix}/bin/ussctl --help)
run("ussctl list" ${prefix}/bin/ussctl list ${catalog})
if(NOT output MATCHES "packet \"Трубы\"")
  message(FATAL_ERROR "ussctl list printed: ${output}")
endif()
message(STATUS "installed package used: ${prefix}")
