// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header runs the program pavoctl and a modem for one test.
#pragma once

#include "ChildProcess.h"
#include "ModemProcess.h"
#include "TemporaryFolder.h"
#include "TerminalProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace pavo::test {

using Arguments = std::vector<std::string>;

// These are the ways in which the tool ends.
inline constexpr ChildProcess::Exit done{.code = 0, .signal = 0};
inline constexpr ChildProcess::Exit failed{.code = 1, .signal = 0};
inline constexpr ChildProcess::Exit badUsage{.code = 2, .signal = 0};

struct ToolResult {
  ChildProcess::Exit exit;
  std::string output;
  std::string errors;

  // Returns the output as JSON; the value is "discarded" when the output is no JSON.
  nlohmann::json json() const;
};

// Writes "exit 0, output ..., errors ...", for failure messages.
std::ostream& operator<<(std::ostream& out, const ToolResult& result);

// Runs the program to its end. The program reads input.
ToolResult runTool(const std::string& modemSocket, const Arguments& arguments,
                   const std::string& input = "");
// Starts the program and does not wait for its end.
std::unique_ptr<ChildProcess> startTool(const std::string& modemSocket, const Arguments& arguments,
                                        const std::string& input = "");
// Starts the program on a terminal.
std::unique_ptr<TerminalProcess> startToolOnTerminal(const std::string& modemSocket,
                                                     const Arguments& arguments);
ToolResult finish(ChildProcess& process);

std::string writeFile(const TemporaryFolder& folder, const std::string& name,
                      const std::string& text);

// The modem has two profiles of its own, with the indices 1 and 2.
class ToolTest : public testing::Test {
 protected:
  ToolTest();

  ToolResult run(const Arguments& arguments, const std::string& input = "") {
    return runTool(modem.socketPath(), arguments, input);
  }
  std::unique_ptr<ChildProcess> start(const Arguments& arguments) {
    return startTool(modem.socketPath(), arguments);
  }
  // Returns one of the modem's profiles as the modem shows it; null when there is none of that
  // index.
  nlohmann::json profileOnModem(int index);

  ModemProcess modem;
};

}  // namespace pavo::test
