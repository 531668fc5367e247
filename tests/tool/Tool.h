// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The program pavoctl and what it is run against, for one test.
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

// How a run of the program ended, and what it said.
// How the tool ends.
inline constexpr ChildProcess::Exit done{.code = 0, .signal = 0};
inline constexpr ChildProcess::Exit failed{.code = 1, .signal = 0};
inline constexpr ChildProcess::Exit badUsage{.code = 2, .signal = 0};

struct ToolResult {
  ChildProcess::Exit exit;
  std::string output;
  std::string errors;

  // The output as JSON; discarded when it is none.
  nlohmann::json json() const;
};

// "exit 0, output ..., errors ...", for failure messages.
std::ostream& operator<<(std::ostream& out, const ToolResult& result);

// Runs the program to its end; input is what it reads.
ToolResult runTool(const std::string& modemSocket, const Arguments& arguments,
                   const std::string& input = "");
// Starts it.
std::unique_ptr<ChildProcess> startTool(const std::string& modemSocket, const Arguments& arguments,
                                        const std::string& input = "");
// The same on a terminal.
std::unique_ptr<TerminalProcess> startToolOnTerminal(const std::string& modemSocket,
                                                     const Arguments& arguments);
ToolResult finish(ChildProcess& process);

std::string writeFile(const TemporaryFolder& folder, const std::string& name,
                      const std::string& text);

// A modem with two profiles of its own, at 1 and 2.
class ToolTest : public testing::Test {
 protected:
  ToolTest();

  ToolResult run(const Arguments& arguments, const std::string& input = "") {
    return runTool(modem.socketPath(), arguments, input);
  }
  std::unique_ptr<ChildProcess> start(const Arguments& arguments) {
    return startTool(modem.socketPath(), arguments);
  }
  // The modem's own word on one of its profiles; null when it has none of that index.
  nlohmann::json profileOnModem(int index);

  ModemProcess modem;
};

}  // namespace pavo::test
