# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

# pavo_options: what every target of this project is compiled with. The warnings are errors in the
# scripts and in CI; a user with another compiler is not stopped by a new one.
add_library(pavo_options INTERFACE)
target_compile_options(pavo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion
  # A constructor may give a parameter the name of the member that it sets. clang allows that anyway.
  $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow>
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
  $<$<BOOL:${PAVO_WARNINGS_AS_ERRORS}>:-Werror>)

# A checked program ends where it reads an empty optional or beyond a container.
target_compile_definitions(pavo_options INTERFACE
  $<$<CONFIG:Checked,Debug>:_GLIBCXX_ASSERTIONS>)

if(PAVO_SANITIZE)
  # The flags are for the whole build: a sanitizer that sees half of a process reports false errors.
  # Optimising instrumented code takes more time than the tests gain by it.
  add_compile_options(-O0 -fsanitize=${PAVO_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${PAVO_SANITIZE})
endif()

if(PAVO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_package(Threads REQUIRED)
