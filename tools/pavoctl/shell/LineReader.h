// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Where the shell's lines come from.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

class LineReader {
 public:
  // What is to be done while there is no input. waitForInput waits until there is some, or a reason
  // not to wait on.
  enum class Waited { input, interrupt, end };
  struct Surroundings {
    // beforeOutput and afterOutput are called around what it prints meanwhile.
    std::function<Waited(const std::function<void()>& beforeOutput,
                         const std::function<void()>& afterOutput)>
        waitForInput;
    // The words that the last word of a line so far may become.
    std::function<std::vector<std::string>(const std::string& lineSoFar)> complete;
  };

  LineReader() = default;
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  virtual ~LineReader() = default;

  // Without the line end; nothing at the end of the input.
  virtual std::optional<std::string> next() = 0;
};

// Standard input as it comes. What follows the last line end is a line too.
std::unique_ptr<LineReader> plainLines(LineReader::Surroundings surroundings);

// A terminal with line editing, history and completion; the prompt goes to standard error.
std::unique_ptr<LineReader> editedLines(LineReader::Surroundings surroundings,
                                        const std::string& prompt);

}  // namespace pavoctl
