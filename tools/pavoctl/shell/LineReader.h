// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The sources of the shell's lines.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

class LineReader {
 public:
  // The shell's part in reading a line. While there is no input, the reader calls waitForInput. It
  // returns when there is input, or a reason to stop waiting.
  enum class Waited { input, interrupt, end };
  struct Surroundings {
    // waitForInput calls beforeOutput and afterOutput around the text that it prints meanwhile.
    std::function<Waited(const std::function<void()>& beforeOutput,
                         const std::function<void()>& afterOutput)>
        waitForInput;
    // Returns the words to which the last word of a line so far may be completed.
    std::function<std::vector<std::string>(const std::string& lineSoFar)> complete;
  };

  LineReader() = default;
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  virtual ~LineReader() = default;

  // Returns the next line without its line end, or nothing at the end of the input.
  virtual std::optional<std::string> next() = 0;
};

// Reads standard input unchanged. Text after the last line end is a line too.
std::unique_ptr<LineReader> plainLines(LineReader::Surroundings surroundings);

// Reads from a terminal with line editing, history and completion. The prompt goes to standard
// error.
std::unique_ptr<LineReader> editedLines(LineReader::Surroundings surroundings,
                                        const std::string& prompt);

}  // namespace pavoctl
