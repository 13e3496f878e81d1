# Installs the built library into a scratch prefix, then configures, builds and
# runs the consumer project against it. The consumer also compiles one source
# per installed header, each including only that header, so that a public
# header that needs an uninstalled one fails here.
execute_process(COMMAND ${CMAKE_COMMAND} -E rm -rf ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${TARN_BINARY_DIR} --prefix ${WORK_DIR}/prefix
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "install failed (${result}):\n${output}")
endif()

file(GLOB_RECURSE headers RELATIVE ${WORK_DIR}/prefix/include ${WORK_DIR}/prefix/include/tarn/*.h)
if(NOT headers)
  message(FATAL_ERROR "no header was installed under ${WORK_DIR}/prefix/include/tarn")
endif()
# Sources are written only when new, so that a second run rebuilds nothing.
file(GLOB stale ${WORK_DIR}/headers/*.cpp)
foreach(header IN LISTS headers)
  string(MAKE_C_IDENTIFIER ${header} stem)
  set(source ${WORK_DIR}/headers/${stem}.cpp)
  list(REMOVE_ITEM stale ${source})
  if(NOT EXISTS ${source})
    file(WRITE ${source} "#include <${header}>\n")
  endif()
endforeach()
if(stale)
  file(REMOVE ${stale})
endif()

foreach(step
    "${CMAKE_COMMAND};-S;${CONSUMER_SOURCE_DIR};-B;${WORK_DIR}/build;-G;Ninja;-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix;-DCMAKE_CXX_COMPILER=${CXX_COMPILER};-DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_COMPILER_LAUNCHER};-DTARN_HEADER_SOURCE_DIR=${WORK_DIR}/headers"
    "${CMAKE_COMMAND};--build;${WORK_DIR}/build"
    "${WORK_DIR}/build/tarn_consumer")
  execute_process(COMMAND ${step} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "step failed (${result}): ${step}\n${output}")
  endif()
endforeach()
