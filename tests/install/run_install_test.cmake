# Installs the built tree into a scratch prefix, then builds and runs hosts
# against it: a Qt C++ host through find_package(ZTUtil) and through
# pkg-config (with nothing but the flags pkg-config gives), and a C99 host
# that sees only the installed headers and library.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

function(expect_output pattern route)
  if(NOT last_output MATCHES "${pattern}")
    message(FATAL_ERROR "consumer (${route}) printed: ${last_output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# find_package(ZTUtil)
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${WORK_DIR}/cmake-build/consumer)
expect_output("TWFu" "find_package")

# pkg-config --cflags --libs ztutil
file(GLOB_RECURSE pc_files ${prefix}/*/ztutil.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --cflags --libs ztutil OUTPUT_VARIABLE flags RESULT_VARIABLE result
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know ztutil")
endif()
separate_arguments(flag_list UNIX_COMMAND "${flags}")
run(c++ -std=c++17 ${CONSUMER_DIR}/consumer.cpp ${flag_list} -Wl,-rpath,${lib_dir}
    -o ${WORK_DIR}/consumer-pc)
run(${WORK_DIR}/consumer-pc)
expect_output("TWFu" "pkg-config")

# A C99 host with the installed headers and library only: no Qt on its path.
run(cc -std=c99 -pedantic-errors -Wall -Wextra -Werror ${C_HOST_SOURCE} -I${prefix}/include
    -L${lib_dir} -lZTUtil -Wl,-rpath,${lib_dir} -o ${WORK_DIR}/c-host)
run(${WORK_DIR}/c-host)
expect_output("c host: all checks passed" "C")
message(STATUS "installed tree usable through find_package, pkg-config and from C")
