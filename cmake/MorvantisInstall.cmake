# What `cmake --install` lays down: programs' DLLs, the library, its headers, a CMake package and a
# pkg-config file. The tree may be moved afterwards.
include(CMakePackageConfigHelpers)

install(TARGETS morvantis EXPORT Morvantis
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(MORVANTIS_RUNTIME_DLLS)
  install(FILES ${MORVANTIS_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# A host must use the containers that the library was built with, so the package remembers them.
if(EASTL_FOUND)
  set(MORVANTIS_EASTL EASTL)
  set(containers_flags " '-DEASTL_USER_CONFIG_HEADER=<morvantis/memory/eastl_config.h>'")
else()
  set(MORVANTIS_EASTL compat)
  set(containers_flags " -I\${includedir}/morvantis/compat/eastl")
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/compat/eastl/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvantis/compat/eastl)
endif()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Morvantis)
install(EXPORT Morvantis NAMESPACE Morvantis:: FILE MorvantisTargets.cmake DESTINATION ${package})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MorvantisConfig.cmake.in
  ${PROJECT_BINARY_DIR}/MorvantisConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MorvantisConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/MorvantisConfig.cmake
  ${PROJECT_BINARY_DIR}/MorvantisConfigVersion.cmake DESTINATION ${package})

# From lib/pkgconfig up to the prefix, however deep the libraries' folder is.
set(here /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH here BASE_DIRECTORY /prefix OUTPUT_VARIABLE below)
string(REGEX REPLACE "[^/]+" ".." up "${below}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/morvantis.pc.in ${PROJECT_BINARY_DIR}/morvantis.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/morvantis.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
