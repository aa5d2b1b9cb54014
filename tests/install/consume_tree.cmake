# Builds and runs hosts against an installed tree (PREFIX, the library in
# LIB_DIR): a Qt C++ host through find_package(ZTUtil) and through
# pkg-config (with nothing but the flags pkg-config gives), and a C99 host,
# also built as C++, that sees only the installed headers and library.
# Needs CONSUMER_DIR, C_HOST_SOURCE and a scratch folder WORK_DIR. For a
# cross build CC, CXX, TOOLCHAIN_FILE, EMULATOR and PKG_CONFIG_LIBDIR name the
# target's compilers, toolchain, the program that runs its binaries and its
# pkg-config folders.
if(NOT CXX)
  set(CXX c++)
endif()
if(NOT CC)
  set(CC cc)
endif()
set(toolchain_option)
if(TOOLCHAIN_FILE)
  set(toolchain_option -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()

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

function(consume_tree prefix lib_dir)
  set(ENV{LD_LIBRARY_PATH} ${lib_dir})

  run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -DCMAKE_PREFIX_PATH=${prefix}
      ${toolchain_option})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
  run(${EMULATOR} ${WORK_DIR}/cmake-build/consumer)
  expect_output("TWFu" "find_package")

  set(ENV{PKG_CONFIG_PATH} ${lib_dir}/pkgconfig)
  if(PKG_CONFIG_LIBDIR)
    set(ENV{PKG_CONFIG_LIBDIR} ${PKG_CONFIG_LIBDIR})
  endif()
  execute_process(COMMAND pkg-config --cflags --libs ztutil OUTPUT_VARIABLE flags RESULT_VARIABLE result
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config does not know ztutil in ${lib_dir}/pkgconfig")
  endif()
  separate_arguments(flag_list UNIX_COMMAND "${flags}")
  run(${CXX} -std=c++17 ${CONSUMER_DIR}/consumer.cpp ${flag_list} -o ${WORK_DIR}/consumer-pc)
  run(${EMULATOR} ${WORK_DIR}/consumer-pc)
  expect_output("TWFu" "pkg-config")

  run(${CC} -std=c99 -pedantic-errors -Wall -Wextra -Werror ${C_HOST_SOURCE} -I${prefix}/include
      -L${lib_dir} -lZTUtil -o ${WORK_DIR}/c-host)
  run(${EMULATOR} ${WORK_DIR}/c-host)
  expect_output("c host: all checks passed" "C")

  # The same host as C++ without Qt on its include path: the plain headers
  # (base64.h included) do not reach for Qt.
  run(${CXX} -x c++ -std=c++17 -pedantic-errors -Wall -Wextra -Werror ${C_HOST_SOURCE}
      -I${prefix}/include -x none -L${lib_dir} -lZTUtil -o ${WORK_DIR}/cxx-host)
  run(${EMULATOR} ${WORK_DIR}/cxx-host)
  expect_output("c host: all checks passed" "C++ without Qt")
endfunction()
