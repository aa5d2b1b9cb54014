# Installation: the library, its public headers, a pkg-config file and a CMake
# package configuration for find_package(ZTUtil). The components are the
# Debian packages of cmake/package.cmake: runtime (the shared library), dev
# (everything to build against it) and tools (zthost, in tools/zthost).
include(CMakePackageConfigHelpers)

install(TARGETS ZTUtil EXPORT ZTUtilTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ztutil
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.h")

set(ZTUTIL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZTUtil)
install(EXPORT ZTUtilTargets NAMESPACE ZTUtil:: DESTINATION ${ZTUTIL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZTUtilConfig.cmake.in
  ${CMAKE_BINARY_DIR}/ZTUtilConfig.cmake
  INSTALL_DESTINATION ${ZTUTIL_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZTUtilConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZTUtilConfig.cmake ${CMAKE_BINARY_DIR}/ZTUtilConfigVersion.cmake
  DESTINATION ${ZTUTIL_CMAKE_DIR} COMPONENT dev)

# The pkg-config file locates the prefix relative to itself, so a tree
# installed with "cmake --install --prefix DIR" is usable where it lands.
file(RELATIVE_PATH ZTUTIL_PC_TO_PREFIX "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
configure_file(${PROJECT_SOURCE_DIR}/cmake/ztutil.pc.in ${CMAKE_BINARY_DIR}/ztutil.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/ztutil.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
