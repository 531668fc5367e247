// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The tool's standard output.
#pragma once

#include <string_view>

namespace pavoctl {

// Takes file descriptor 1 for the tool's own text and leaves the null device in its place.
//
// The library writes a line of its own to standard output when its worker ends, at process exit or
// before. That line would spoil the output of --json for the program that parses it. Construct this
// once, before the library starts.
class Output {
 public:
  Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  // Writes the text and a line end at once. Throws OutputFailure when they cannot be written.
  void line(std::string_view text) const;
  // Writes the text unchanged. Throws as line() does.
  void write(std::string_view text) const;

 private:
  int fd = -1;
};

// Writes "pavoctl: ", the text and a line end to standard error.
void complain(std::string_view text);
// Writes the process's last line and ends the process. No complaint follows it. An empty text
// writes nothing.
[[noreturn]] void complainAndExit(std::string_view text, int status);

}  // namespace pavoctl
