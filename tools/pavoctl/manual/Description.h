// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A description of the tool's commands and options for completion and the manual page. All of it
// comes from the parser itself, so that nothing can be missing.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace pavoctl {

struct OptionDescription {
  std::vector<std::string> names;   // "-h", "--help"; an argument has one name: "ID"
  std::string kind;                 // of the value: "SECONDS", "yes|no"; empty when it takes none
  std::vector<std::string> values;  // the possible words, when they are known
  std::string help;
  std::string group;
};

struct CommandDescription {
  std::string name;
  std::string help;
  std::string text;  // paragraphs and examples
  std::vector<OptionDescription> options;
  std::vector<OptionDescription> arguments;

  bool hasOption(const std::string& option) const;
};

struct Description {
  std::string help;
  std::vector<OptionDescription> options;  // the options of every command
  std::vector<CommandDescription> commands;
};

Description describe(const CLI::App& app);

// The commands of the tool as it is started, and those of its shell.
struct Descriptions {
  Description program;
  Description shell;
};

std::string describeInJson(const Descriptions& descriptions);
// Returns the sections of the manual page that list commands and options, in roff.
std::string describeInRoff(const Descriptions& descriptions);
// Returns a completion script for bash. It leaves the shell's commands out.
std::string describeInBash(const Description& program);

}  // namespace pavoctl
