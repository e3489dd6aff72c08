include(CMakePackageConfigHelpers)

set(VOBASE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VoBase)

install(EXPORT VoBaseTargets
  NAMESPACE VoBase::
  DESTINATION ${VOBASE_CMAKE_DIR})

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
  DESTINATION ${VOBASE_CMAKE_DIR})
