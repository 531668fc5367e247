// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the tool understands, for those who help with typing it and for the manual page. All of it
// comes from the parser itself, so that nothing can be missing.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace pavoctl {

struct OptionDescription {
  std::vector<std::string> names;   // "-h", "--help"; of an argument its one name: "ID".
  std::string kind;                 // Of the value: "SECONDS", "yes|no"; empty when it takes none.
  std::vector<std::string> values;  // The words that are possible, when they can be told.
  std::string help;
  std::string group;
};

struct CommandDescription {
  std::string name;
  std::string help;
  std::string text;  // Paragraphs and examples.
  std::vector<OptionDescription> options;
  std::vector<OptionDescription> arguments;

  bool hasOption(const std::string& option) const;
};

struct Description {
  std::string help;
  std::vector<OptionDescription> options;  // Of every command.
  std::vector<CommandDescription> commands;
};

Description describe(const CLI::App& app);

// The tool as it is started, and the tool in its shell.
struct Descriptions {
  Description program;
  Description shell;
};

std::string describeInJson(const Descriptions& descriptions);
// The sections of the manual page that list commands and options, in the language of man.
std::string describeInRoff(const Descriptions& descriptions);
// A completion script for bash; the shell's commands do not concern it.
std::string describeInBash(const Description& program);

}  // namespace pavoctl
