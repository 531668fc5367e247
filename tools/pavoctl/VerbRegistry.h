// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Where the verbs' rooms declare what they can do.
#pragma once

#include "CommandLine.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}  // namespace CLI

namespace pavoctl {

class VerbRegistry {
 public:
  struct Verb {
    std::string name;
    std::string help;
    std::string footer;  // What else there is to say, and examples.
    Action action;
  };
  // Looks at the line as a whole, when it has been read and is the verb's; may throw UsageError.
  using Check = std::function<void()>;

  VerbRegistry(CLI::App& parser, CommandLine& parsed) : line(parsed), app(parser) {}

  // The verb's options are to be added to what it returns, and to write into line.
  CLI::App& add(const Verb& verb, Check check = {});

  // The footer that the verb was declared with.
  static std::string footerOf(const CLI::App& verb);

  CommandLine& line;

 private:
  CLI::App& app;
};

}  // namespace pavoctl
