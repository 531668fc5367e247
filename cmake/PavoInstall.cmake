# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

# What is installed besides the targets: the package that find_package(pavor) finds.
include(CMakePackageConfigHelpers)

set(pavo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pavor)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/pavorConfig.cmake.in ${CMAKE_BINARY_DIR}/pavorConfig.cmake
  INSTALL_DESTINATION ${pavo_package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/pavorConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/pavorConfig.cmake ${CMAKE_BINARY_DIR}/pavorConfigVersion.cmake
  DESTINATION ${pavo_package_dir})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(EXPORT pavorTargets NAMESPACE pavor:: DESTINATION ${pavo_package_dir})

if(PAVO_ON_HOST)
  # The stand-ins lie beside libpavor.so and the log library where the system has it. A device has
  # its own in the loader's path.
  set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)
endif()
