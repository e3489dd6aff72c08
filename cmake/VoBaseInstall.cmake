include(CMakePackageConfigHelpers)

set(VOBASE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VoBase)

install(EXPORT VoBaseTargets
  NAMESPACE VoBase::
  DESTINATION ${VOBASE_CMAKE_DIR}
  COMPONENT dev)

configure_package_config_file(
  ${CMAKE_CURRENT_SOURCE_DIR}/cmake/VoBaseConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/VoBaseConfig.cmake
  INSTALL_DESTINATION ${VOBASE_CMAKE_DIR})

write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/VoBaseConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)

install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/VoBaseConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/VoBaseConfigVersion.cmake
  DESTINATION ${VOBASE_CMAKE_DIR}
  COMPONENT dev)

# pkg-config files, one per library, beside the CMake package. They find
# their prefix from their own place (${pcfiledir}), so an installed tree
# may be moved. The libraries are shared: a client links only the libraries
# named in Libs; Requires.private and Libs.private list what the libraries
# link privately, for static linking and for the dependency checks of
# pkg-config. nlohmann-json is used inside bxbase only and is header-only,
# so clients never need it.
file(RELATIVE_PATH VOBASE_PC_PREFIX_FROM_PCDIR "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
string(REGEX REPLACE "/$" "" VOBASE_PC_PREFIX_FROM_PCDIR "${VOBASE_PC_PREFIX_FROM_PCDIR}")
function(vobase_add_pkgconfig name description requires requires_private libs_private cflags)
  set(VOBASE_PC_NAME ${name})
  set(VOBASE_PC_DESCRIPTION "${description}")
  set(VOBASE_PC_REQUIRES "${requires}")
  set(VOBASE_PC_REQUIRES_PRIVATE "${requires_private}")
  set(VOBASE_PC_LIBS_PRIVATE "${libs_private}")
  set(VOBASE_PC_LIBRARY ${name})
  set(VOBASE_PC_CFLAGS "${cflags}")
  configure_file(${CMAKE_CURRENT_SOURCE_DIR}/cmake/vobase.pc.in ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT dev)
endfunction()
vobase_add_pkgconfig(bxbase "VoBase base types: smart pointers, variants, exceptions, streams, logging, threads"
  "" "" "-pthread -l${CMAKE_DL_LIBS}" " -pthread")
vobase_add_pkgconfig(vocompression "VoBase entropy coders: range coder, probability model, LZMA"
  "bxbase = ${PROJECT_VERSION}" "" "-l${CMAKE_DL_LIBS}" "")
vobase_add_pkgconfig(vobase "${PROJECT_DESCRIPTION}"
  "bxbase = ${PROJECT_VERSION}, vocompression = ${PROJECT_VERSION}" "zlib" "-l${CMAKE_DL_LIBS}" "")

include(${CMAKE_CURRENT_LIST_DIR}/VoBasePackage.cmake)
