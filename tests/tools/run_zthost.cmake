# Runs ZTHOST with ARGS (through EMULATOR, if given) and checks what it did.
#   EXPECTED_EXIT    the exit status
#   EXPECTED_MATCH   a regular expression the combined output must match
#   STDOUT_MATCH     one standard output alone must match
#   NOT_MATCH        one the combined output must not match
#   INPUT            a file to feed on standard input
#   COMPARE          two files that must be equal afterwards ("a;b")
#   CLEAN            a file to remove before the run
#   PIPE             a command standard output is piped into; its output
#                    and exit status are then the ones checked
if(CLEAN)
  file(REMOVE ${CLEAN})
endif()
set(stdin_option)
if(INPUT)
  set(stdin_option INPUT_FILE ${INPUT})
endif()
set(pipe_option)
if(PIPE)
  set(pipe_option COMMAND ${PIPE})
endif()
execute_process(COMMAND ${EMULATOR} ${ZTHOST} ${ARGS} ${pipe_option} ${stdin_option}
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
set(report "stdout:\n${out}\nstderr:\n${err}")
if(NOT "${status}" STREQUAL "${EXPECTED_EXIT}")
  message(FATAL_ERROR "exit status ${status}, expected ${EXPECTED_EXIT}\n${report}")
endif()
if(EXPECTED_MATCH AND NOT "${out}${err}" MATCHES "${EXPECTED_MATCH}")
  message(FATAL_ERROR "output does not match '${EXPECTED_MATCH}'\n${report}")
endif()
if(STDOUT_MATCH AND NOT "${out}" MATCHES "${STDOUT_MATCH}")
  message(FATAL_ERROR "standard output does not match '${STDOUT_MATCH}'\n${report}")
endif()
if(NOT_MATCH AND "${out}${err}" MATCHES "${NOT_MATCH}")
  message(FATAL_ERROR "output matches '${NOT_MATCH}'\n${report}")
endif()
if(COMPARE)
  list(GET COMPARE 0 first)
  list(GET COMPARE 1 second)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${first} ${second} RESULT_VARIABLE differ)
  if(differ)
    message(FATAL_ERROR "${first} and ${second} differ\n${report}")
  endif()
endif()
