# Builds the Debian packages: a build tree of its own configured for /usr
# (so that the library lands in the multiarch folder) with Debian's build
# flags (hardening included), without tests and benchmarks, then CPack.
#   cmake -DBUILD_DIR=DIR [-DJOBS=N] -P cmake/build_packages.cmake
# The packages are left in DIR/packages.
cmake_minimum_required(VERSION 3.25)
if(NOT BUILD_DIR)
  message(FATAL_ERROR "usage: cmake -DBUILD_DIR=DIR [-DJOBS=N] -P build_packages.cmake")
endif()
if(NOT JOBS)
  cmake_host_system_information(RESULT JOBS QUERY NUMBER_OF_LOGICAL_CORES)
endif()
get_filename_component(source_dir ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
get_filename_component(cmake_bin_dir ${CMAKE_COMMAND} DIRECTORY)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}")
  endif()
endfunction()

function(build_flags variable out)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all
      dpkg-buildflags --get ${variable}
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "dpkg-buildflags is missing (package dpkg-dev)")
  endif()
  set(${out} "${flags}" PARENT_SCOPE)
endfunction()
build_flags(CPPFLAGS cppflags)
build_flags(CFLAGS cflags)
build_flags(CXXFLAGS cxxflags)
build_flags(LDFLAGS ldflags)

run(${CMAKE_COMMAND} -S ${source_dir} -B ${BUILD_DIR}
  -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr
  -DZTUTIL_BUILD_TESTS=OFF -DZTUTIL_BUILD_BENCH=OFF
  "-DCMAKE_C_FLAGS=${cppflags} ${cflags}" "-DCMAKE_CXX_FLAGS=${cppflags} ${cxxflags}"
  "-DCMAKE_EXE_LINKER_FLAGS=${ldflags}" "-DCMAKE_SHARED_LINKER_FLAGS=${ldflags}")
run(${CMAKE_COMMAND} --build ${BUILD_DIR} -j ${JOBS})
file(REMOVE_RECURSE ${BUILD_DIR}/packages)
run(${cmake_bin_dir}/cpack -G DEB -B ${BUILD_DIR}/packages --config ${BUILD_DIR}/CPackConfig.cmake)

# CPack calls ldconfig from postinst and postrm of the runtime package;
# Debian asks for the ldconfig trigger instead.
file(GLOB runtime_package ${BUILD_DIR}/packages/libztutil1_*.deb)
set(unpacked ${BUILD_DIR}/packages/runtime-root)
run(dpkg-deb -R ${runtime_package} ${unpacked})
file(REMOVE ${unpacked}/DEBIAN/postinst ${unpacked}/DEBIAN/postrm)
file(WRITE ${unpacked}/DEBIAN/triggers "activate-noawait ldconfig\n")
run(dpkg-deb --root-owner-group -Zgzip -b ${unpacked} ${runtime_package})
file(REMOVE_RECURSE ${unpacked})
