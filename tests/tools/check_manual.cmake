# Checks the manual page against the tool's own help: every command that
# "zthost --help" lists has a ".SS" section in the page, and each section
# names the command's subcommands and options as the command's help (and the
# help of its subcommands) gives them. Variables: ZTHOST, MANUAL, EMULATOR.
function(help_of out)
  execute_process(COMMAND ${EMULATOR} ${ZTHOST} ${ARGN} --help
    RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_QUIET)
  if(NOT status EQUAL 0)
    set(text "")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# The roff source as plain text: escapes for hyphens and fonts dropped.
file(READ ${MANUAL} page)
string(REPLACE "\\-" "-" page "${page}")
string(REGEX REPLACE "\\\\f[BIRP]" "" page "${page}")
string(REGEX REPLACE "\\\\[(][a-z][a-z]" "" page "${page}")

help_of(tool_help)
string(REGEX MATCH "\ncommands:\n(.*)\n\n" command_block "${tool_help}")
string(REGEX MATCHALL "\n  [a-z][a-z0-9-]*" commands "\n${CMAKE_MATCH_1}")
if(NOT commands)
  message(FATAL_ERROR "no commands found in the output of zthost --help")
endif()

set(failures "")
foreach(command ${commands})
  string(STRIP "${command}" command)
  string(FIND "${page}" "\n.SS ${command}\n" start)
  if(start EQUAL -1)
    string(APPEND failures "no section \".SS ${command}\"\n")
    continue()
  endif()
  string(SUBSTRING "${page}" ${start} -1 section)
  string(SUBSTRING "${section}" 4 -1 rest)
  string(FIND "${rest}" "\n.S" end)
  string(SUBSTRING "${section}" 0 ${end} section)

  # Subcommands: the words after "zthost COMMAND" in the usage texts
  # ("seal gm|zw" gives gm and zw); each subcommand's help adds its options.
  help_of(help ${command})
  string(REGEX MATCHALL "zthost ${command} [a-z][a-z0-9|-]*[ \n]" usages "${help}")
  set(words "")
  foreach(usage ${usages})
    string(REGEX REPLACE "^zthost ${command} ([^ \n]*).*" "\\1" alternatives "${usage}")
    string(REPLACE "|" ";" alternatives "${alternatives}")
    list(APPEND words ${alternatives})
  endforeach()
  list(REMOVE_DUPLICATES words)
  foreach(word ${words})
    # "COMMAND SUB" as a usage line spells it, alternatives allowed before.
    if(NOT section MATCHES "${command} ([a-z0-9-]+[|])*${word}[ |\n]")
      string(APPEND failures "section \"${command}\" has no usage of \"${command} ${word}\"\n")
    endif()
    help_of(sub_help ${command} ${word})
    if(sub_help MATCHES "^usage: zthost ${command} ${word}")
      string(APPEND help "${sub_help}")
    endif()
  endforeach()

  string(REGEX REPLACE "[][()|\n]" " " help "${help}")
  string(REGEX MATCHALL " --?[a-z][a-z0-9-]*" options "${help}")
  list(TRANSFORM options STRIP)
  list(REMOVE_DUPLICATES options)
  list(REMOVE_ITEM options --help)
  foreach(option ${options})
    if(NOT section MATCHES "[^a-z0-9-]${option}([^a-z0-9-]|$)")
      string(APPEND failures "section \"${command}\" does not mention ${option}\n")
    endif()
  endforeach()
endforeach()

if(failures)
  message(FATAL_ERROR "${MANUAL} is behind zthost --help:\n${failures}")
endif()
list(LENGTH commands count)
message(STATUS "the manual describes all ${count} commands of zthost --help")
