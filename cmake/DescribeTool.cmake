# SPDX-FileCopyrightText: The Pavor Authors
# SPDX-License-Identifier: Apache-2.0

# Writes pavoctl's manual page and completion script into the folder TO: TOOL describes itself, PAGE
# is the page without the commands and options.
cmake_minimum_required(VERSION 3.25)

function(describe form result)
  execute_process(COMMAND ${TOOL} --describe ${form} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

describe(man REFERENCE)
file(READ ${PAGE} page)
string(REPLACE "@VERSION@" "${VERSION}" page "${page}")
string(REPLACE "@REFERENCE@\n" "${REFERENCE}" page "${page}")
file(WRITE ${TO}/pavoctl.1 "${page}")

describe(bash completion)
file(WRITE ${TO}/pavoctl.bash "${completion}")
