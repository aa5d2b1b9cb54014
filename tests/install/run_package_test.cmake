# Builds the Debian packages as "make package" does, has lintian check them
# (errors fail the test, warnings are shown), unpacks them into a scratch
# root with dpkg -x and builds the hosts of consume_tree.cmake against that
# root; zthost runs its demo from there on the packaged example files.
include(${CMAKE_CURRENT_LIST_DIR}/consume_tree.cmake)
set(packages_dir ${PACKAGE_BUILD_DIR}/packages)
set(root ${WORK_DIR}/root)
file(REMOVE_RECURSE ${WORK_DIR})

run(${CMAKE_COMMAND} -DBUILD_DIR=${PACKAGE_BUILD_DIR} -DJOBS=2 -P ${SOURCE_DIR}/cmake/build_packages.cmake)
file(GLOB packages ${packages_dir}/*.deb)

find_program(LINTIAN lintian)
if(NOT LINTIAN)
  message(FATAL_ERROR "lintian is missing: \"make deps\" installs it")
endif()
execute_process(COMMAND ${LINTIAN} --fail-on error ${packages}
  RESULT_VARIABLE lintian_result OUTPUT_VARIABLE lintian_output ERROR_VARIABLE lintian_errors)
if(lintian_output)
  message(STATUS "lintian:\n${lintian_output}")
endif()
if(NOT lintian_result EQUAL 0)
  message(FATAL_ERROR "lintian found errors:\n${lintian_output}${lintian_errors}")
endif()

# Dependencies: dpkg-shlibdeps found Qt and OpenSSL; the others need the library.
foreach(check "libztutil1_;libqt5core5a .*libssl3" "ztutil-tools_;libztutil1 \\(= .*libqt5core5a"
    "libztutil-dev_;libztutil1 \\(= .*qtbase5-dev")
  list(GET check 0 package_prefix)
  list(GET check 1 pattern)
  file(GLOB package ${packages_dir}/${package_prefix}*.deb)
  run(dpkg-deb -f ${package} Depends)
  if(NOT last_output MATCHES "${pattern}")
    message(FATAL_ERROR "${package}: Depends: ${last_output}")
  endif()
endforeach()

file(MAKE_DIRECTORY ${root})
foreach(package ${packages})
  run(dpkg -x ${package} ${root})
endforeach()
file(GLOB libraries ${root}/usr/lib/*/libZTUtil.so.1)
list(GET libraries 0 library)
get_filename_component(lib_dir ${library} DIRECTORY)
consume_tree(${root}/usr ${lib_dir})

run(${root}/usr/bin/zthost demo --examples ${root}/usr/share/zthost/examples)
expect_output("every step passed" "zthost demo")
if(NOT EXISTS ${root}/usr/share/man/man1/zthost.1.gz)
  message(FATAL_ERROR "the tools package lacks the manual page")
endif()
message(STATUS "packages pass lintian and are usable from a dpkg -x root")
