# Debian packages with CPack: "cpack -G DEB" in a build tree configured for
# /usr (see cmake/build_packages.cmake, which "make package" runs) gives
#   libztutil1      the shared library (named after its SONAME)
#   libztutil-dev   headers, the .so link, pkg-config and CMake files
#   ztutil-tools    zthost, its manual page and the demo files
# Dependencies on shared libraries come from dpkg-shlibdeps, the architecture
# from dpkg.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ztutil)
set(CPACK_PACKAGE_VENDOR "The libZTUtil developers")
set(CPACK_PACKAGE_CONTACT "libZTUtil developers <ztutil@lists.example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libztutil1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "cryptography and encodings of Chinese electronic seals
libZTUtil is loaded by host signing applications for SM2 signature
verification with the SM3 Z pre-hash, SM3 and HMAC-SM3, X.509 certificate
reading, the GM and government-affairs seal signature structures, RSA
verification, Base64 (including the SM2 alphabet) and UTF-8 / GBK text.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libztutil-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The public headers of the components are Qt-typed, and ZTUtilConfig.cmake
# and ztutil.pc ask for Qt5Core.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qtbase5-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "cryptography and encodings of Chinese electronic seals (development files)
Headers, the shared-library link, the pkg-config file (ztutil) and the CMake
package (find_package(ZTUtil)) for building against libZTUtil. The headers
of the plain function sets (SM3, SM2, RSA, DER, Base64, text conversion)
are valid C99 as well as C++.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ztutil-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
  "host tool for libZTUtil: certificates, SM2 signatures, seals
zthost loads libZTUtil as a host signing application does and uses it to
show certificates and DER trees, compute SM3 and HMAC-SM3 digests, verify
and convert SM2 and RSA signatures, build and verify GM and
government-affairs seal signature structures, and convert Base64 and GBK.")

include(CPack)
cpack_add_component(runtime)
cpack_add_component(dev DEPENDS runtime)
cpack_add_component(tools DEPENDS runtime)

# What Debian wants in /usr/share/doc/<package> of each package, and the
# lintian overrides (each explained in its file). Only a component
# installation (as CPack does it) installs these.
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in ${CMAKE_BINARY_DIR}/debian/changelog @ONLY)
set(ztutil_debian_changelog ${CMAKE_BINARY_DIR}/debian/changelog.gz)
add_custom_command(OUTPUT ${ztutil_debian_changelog}
  COMMAND gzip -9n -c ${CMAKE_BINARY_DIR}/debian/changelog > ${ztutil_debian_changelog}
  DEPENDS ${CMAKE_BINARY_DIR}/debian/changelog VERBATIM)
add_custom_target(ztutil_debian_changelog ALL DEPENDS ${ztutil_debian_changelog})
foreach(component runtime dev tools)
  string(TOUPPER ${component} component_upper)
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${ztutil_debian_changelog}
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${component_upper}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  set(overrides ${PROJECT_SOURCE_DIR}/cmake/debian/${CPACK_DEBIAN_${component_upper}_PACKAGE_NAME}.lintian-overrides)
  if(EXISTS ${overrides})
    install(FILES ${overrides} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
      RENAME ${CPACK_DEBIAN_${component_upper}_PACKAGE_NAME} COMPONENT ${component} EXCLUDE_FROM_ALL)
  endif()
endforeach()
