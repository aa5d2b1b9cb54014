# Installs the built tree into a scratch prefix with "cmake --install" and
# builds the hosts of consume_tree.cmake against it. A cross build passes its
# compilers (CC, CXX), TOOLCHAIN_FILE, EMULATOR and the target's
# PKG_CONFIG_LIBDIR, so the hosts are built for the target and run through
# the emulator.
file(REMOVE_RECURSE ${WORK_DIR})
include(${CMAKE_CURRENT_LIST_DIR}/consume_tree.cmake)

set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
file(GLOB_RECURSE libraries ${prefix}/*/libZTUtil.so.1)
list(GET libraries 0 library)
get_filename_component(lib_dir ${library} DIRECTORY)
consume_tree(${prefix} ${lib_dir})
message(STATUS "installed tree usable through find_package, pkg-config and from C")
