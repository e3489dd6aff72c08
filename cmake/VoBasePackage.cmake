# Debian packages made by `cpack -G DEB` in a build tree (see the README):
#
#   libvobase0     the three shared libraries and the LZMA module (component runtime)
#   libvobase-dev  headers, the library links, the CMake package and the
#                  pkg-config files (component dev); depends on libvobase0
#                  and zlib1g-dev
#   vobase-tools   voarchive and vobase-demo (component tools), when built
#
# The packages install below /usr. The runtime package's dependencies come
# from dpkg-shlibdeps; the others depend on the exact version of libvobase0.
set(CPACK_PACKAGE_NAME vobase)
set(CPACK_PACKAGE_VENDOR "VoBase developers")
set(CPACK_PACKAGE_CONTACT "VoBase developers <vobase@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
if(VOBASE_BUILD_APPS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Our own libraries, for dpkg-shlibdeps when it looks at the tools.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${CMAKE_BINARY_DIR}/core/baselibraries/bxbase
  ${CMAKE_BINARY_DIR}/core/volibraries/vocompression
  ${CMAKE_BINARY_DIR}/core/volibraries/vobase)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvobase${PROJECT_VERSION_MAJOR})
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared libraries)")
# A shlibs file, so that packages built on it get their dependency from dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvobase-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# pkg-config resolves the Requires.private of vobase.pc (zlib) too.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvobase${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), zlib1g-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEV_DESCRIPTION "${PROJECT_DESCRIPTION} (headers, CMake package, pkg-config files)")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vobase-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libvobase${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION} (the archive tool and the demo program)")

include(CPack)
