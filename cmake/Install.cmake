# SPDX-License-Identifier: LGPL-2.1-or-later
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/GenericUtilities)
configure_package_config_file(cmake/GenericUtilitiesConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/GenericUtilitiesConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/GenericUtilitiesConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/GenericUtilitiesConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/GenericUtilitiesConfigVersion.cmake
  DESTINATION ${package_dir})
install(EXPORT GenericUtilitiesTargets NAMESPACE GenericUtilities:: DESTINATION ${package_dir})

# Relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/GenericUtilities.pc.in ${PROJECT_BINARY_DIR}/cmake/GenericUtilities.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/GenericUtilities.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
