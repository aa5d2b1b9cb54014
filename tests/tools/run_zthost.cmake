# Runs ZTHOST with ARGS; checks the exit status and that the combined output
# matches EXPECTED_MATCH.
execute_process(COMMAND ${ZTHOST} ${ARGS}
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT "${status}" STREQUAL "${EXPECTED_EXIT}")
  message(FATAL_ERROR "exit status ${status}, expected ${EXPECTED_EXIT}\nstdout:\n${out}\nstderr:\n${err}")
endif()
if(EXPECTED_MATCH AND NOT "${out}${err}" MATCHES "${EXPECTED_MATCH}")
  message(FATAL_ERROR "output does not match '${EXPECTED_MATCH}'\nstdout:\n${out}\nstderr:\n${err}")
endif()
