// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The registry in which each room declares its verbs.
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
    std::string footer;  // further help and examples
    Action action;
  };
  // Checks the whole line when it has been read and the verb is its verb. It may throw UsageError.
  using Check = std::function<void()>;

  VerbRegistry(CLI::App& parser, CommandLine& parsed) : line(parsed), app(parser) {}

  // Returns the verb's parser. The caller adds options to it, and they write into line.
  CLI::App& add(const Verb& verb, Check check = {});

  // Returns the footer with which the verb was declared.
  static std::string footerOf(const CLI::App& verb);

  CommandLine& line;

 private:
  CLI::App& app;
};

}  // namespace pavoctl
