# zthost sm3 on a FIFO whose writer pauses 1.5 s after the first 70000
# bytes, so that hashing takes more than a second: once with standard error
# on a terminal (script(1) gives it a pseudo-terminal), where the progress
# line must appear, and once with it redirected, where nothing may be written
# to it. Variables: ZTHOST, EMULATOR, WORK.
cmake_minimum_required(VERSION 3.25)
string(ASCII 27 escape)
file(MAKE_DIRECTORY ${WORK})
set(fifo ${WORK}/progress.fifo)
set(data ${WORK}/progress.bin)
string(REPEAT "zthost progress test data\n" 12000 content)
file(WRITE ${data} "${content}")
string(REPLACE ";" " " command "${EMULATOR} ${ZTHOST} sm3 ${fifo}")
set(writer "rm -f ${fifo} && mkfifo ${fifo} && { { head -c 70000 ${data}; sleep 1.5; cat ${data}; } > ${fifo} & }")

execute_process(COMMAND sh -c "${writer}; script -qec '${command}' /dev/null"
  RESULT_VARIABLE status OUTPUT_VARIABLE terminal ERROR_VARIABLE terminal_err)
if(NOT status EQUAL 0 OR NOT terminal MATCHES "\r${escape}\\[Ksm3: [^\r\n]*progress.fifo: [0-9.]+ (B|KiB|MiB)"
   OR NOT terminal MATCHES "[0-9a-f]+  [^\n]*progress.fifo\r?\n")
  message(FATAL_ERROR "on a terminal, no progress line (status ${status}):\n${terminal}${terminal_err}")
endif()

execute_process(COMMAND sh -c "${writer}; ${command}"
  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0 OR NOT err STREQUAL "" OR NOT out MATCHES "^[0-9a-f]+  [^\n]*progress.fifo\n$")
  message(FATAL_ERROR "with standard error redirected (status ${status}):\nstdout:\n${out}\nstderr:\n${err}")
endif()
file(REMOVE ${fifo} ${data})
