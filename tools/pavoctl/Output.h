// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The tool's standard output.
#pragma once

#include <string_view>

namespace pavoctl {

// Takes file descriptor 1 for the tool's own text and leaves the null device in its place.
//
// The library writes a line of its own to standard output when its worker ends, at process exit or
// before; between the braces of --json, or behind them, it would spoil what another program parses.
// Make one, before the library starts.
class Output {
 public:
  Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  // The text and a line end, at once. Throws OutputFailure when it cannot be written.
  void line(std::string_view text) const;
  // The text as it is.
  void write(std::string_view text) const;

 private:
  int fd = -1;
};

// Writes "pavoctl: ", the text and a line end to standard error.
void complain(std::string_view text);
// The same as the process's last word: nobody complains after it. An empty text is silence.
[[noreturn]] void complainAndExit(std::string_view text, int status);

}  // namespace pavoctl
