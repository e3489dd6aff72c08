# vobase_add_library(<name> INCLUDE_ROOT <dir> [DEPENDS <targets>...] [PRIVATE_DEPENDS <targets>...])
#
# Builds one shared library from every .cpp below the calling directory.
# Headers are found through INCLUDE_ROOT (so `#include <name/...>` works) and
# are installed below include/ with the same relative paths.
function(vobase_add_library name)
  cmake_parse_arguments(ARG "" "INCLUDE_ROOT" "DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_library(${name} SHARED ${sources} ${headers})
  add_library(VoBase::${name} ALIAS ${name})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILDING)
  # The runtime's trace hook points, built in or compiled out (bxbase/diagnostics/bxtracehooks.h).
  if(VOBASE_TRACE_HOOKS)
    target_compile_definitions(${name} PUBLIC VOBASE_TRACE_HOOKS=1)
  else()
    target_compile_definitions(${name} PUBLIC VOBASE_TRACE_HOOKS=0)
  endif()
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${ARG_INCLUDE_ROOT}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME ${name})
  install(TARGETS ${name} EXPORT VoBaseTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name}
    COMPONENT dev
    FILES_MATCHING PATTERN "*.h")
endfunction()
