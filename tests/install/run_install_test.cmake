# Installs the built tree into a scratch prefix, then builds and runs a small
# host program against it twice: through find_package(ZTUtil) and through
# pkg-config. A cross build passes its compiler (CXX), TOOLCHAIN_FILE,
# EMULATOR and the target's PKG_CONFIG_LIBDIR, so the host program is built
# for the target and run through the emulator.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# find_package(ZTUtil)
set(toolchain_option)
if(TOOLCHAIN_FILE)
  set(toolchain_option -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -DCMAKE_PREFIX_PATH=${prefix}
    ${toolchain_option})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${EMULATOR} ${WORK_DIR}/cmake-build/consumer)
if(NOT last_output MATCHES "TWFu")
  message(FATAL_ERROR "consumer (find_package) printed: ${last_output}")
endif()

# pkg-config --cflags --libs ztutil
file(GLOB_RECURSE pc_files ${prefix}/*/ztutil.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
if(PKG_CONFIG_LIBDIR)
  set(ENV{PKG_CONFIG_LIBDIR} ${PKG_CONFIG_LIBDIR})
endif()
execute_process(COMMAND pkg-config --cflags --libs ztutil OUTPUT_VARIABLE flags RESULT_VARIABLE result
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know ztutil")
endif()
separate_arguments(flag_list UNIX_COMMAND "${flags}")
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
if(NOT CXX)
  set(CXX c++)
endif()
run(${CXX} -std=c++17 -fPIC ${CONSUMER_DIR}/consumer.cpp ${flag_list} -Wl,-rpath,${lib_dir}
    -o ${WORK_DIR}/consumer-pc)
run(${EMULATOR} ${WORK_DIR}/consumer-pc)
if(NOT last_output MATCHES "TWFu")
  message(FATAL_ERROR "consumer (pkg-config) printed: ${last_output}")
endif()
message(STATUS "installed tree usable through find_package and pkg-config")
