# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

# The build type Checked is for tests. It keeps assert(), which holds each class to its thread, has the
# standard library check what it is given, and optimises a little, because checked code is run often.
set(CMAKE_C_FLAGS_CHECKED "-O1 -g1" CACHE STRING "Flags of the C compiler in a checked build")
set(CMAKE_CXX_FLAGS_CHECKED "-O1 -g1" CACHE STRING "Flags of the C++ compiler in a checked build")
mark_as_advanced(CMAKE_C_FLAGS_CHECKED CMAKE_CXX_FLAGS_CHECKED)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()
set_property(CACHE CMAKE_BUILD_TYPE PROPERTY STRINGS
  Checked Debug Release RelWithDebInfo MinSizeRel)
