# Installs the built library into a scratch prefix, then configures, builds and
# runs the consumer project against it.
foreach(step
    "${CMAKE_COMMAND};--install;${TARN_BINARY_DIR};--prefix;${WORK_DIR}/prefix"
    "${CMAKE_COMMAND};-S;${CONSUMER_SOURCE_DIR};-B;${WORK_DIR}/build;-G;Ninja;-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix"
    "${CMAKE_COMMAND};--build;${WORK_DIR}/build"
    "${WORK_DIR}/build/tarn_consumer")
  execute_process(COMMAND ${step} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "step failed (${result}): ${step}\n${output}")
  endif()
endforeach()
