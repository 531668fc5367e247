// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Text.h"
#include "manual/Description.h"

#include <algorithm>
#include <string_view>

namespace pavoctl {
namespace {

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      result += c;
    }
  }
  return result;
}

// Returns the text as a line of its own that cannot be taken for a request.
std::string lineOf(std::string_view text) {
  const bool isRequest = !text.empty() && (text.front() == '.' || text.front() == '\'');
  return (isRequest ? "\\&" : "") + escaped(text) + '\n';
}

std::string optionText(const OptionDescription& option, bool isArgument) {
  std::string text = ".TP\n";
  text += isArgument ? "\\fI" : "\\fB";
  text += escaped(join(option.names, ", ")) + "\\fR";
  if (!option.kind.empty() && !isArgument) {
    text += " \\fI" + escaped(option.kind) + "\\fR";
  }
  return text + '\n' + lineOf(option.help);
}

// Paragraphs are filled. Examples are indented and stay unchanged.
std::string paragraphs(std::string_view text) {
  std::string result;
  bool isExample = false;
  for (const auto line : split(text, "\n")) {
    const bool isIndented = !line.empty() && line.front() == ' ';
    if (isIndented != isExample) {
      result += isIndented ? ".nf\n" : ".fi\n";
      isExample = isIndented;
    }
    result += line.empty() ? ".PP\n" : lineOf(line);
  }
  return result + (isExample ? ".fi\n" : "");
}

std::string commandText(const CommandDescription& command) {
  std::string text = ".SS \"" + escaped(command.name);
  for (const auto& argument : command.arguments) {
    text += " " + escaped(argument.names.front());
  }
  text += command.options.empty() ? "\"\n" : " [OPTION]...\"\n";
  text += lineOf(command.help + ".") + ".PP\n" + paragraphs(command.text);
  for (const auto& argument : command.arguments) {
    text += optionText(argument, /*isArgument=*/true);
  }
  for (const auto& option : command.options) {
    text += optionText(option, /*isArgument=*/false);
  }
  return text;
}

}  // namespace

std::string describeInRoff(const Descriptions& descriptions) {
  std::string text = ".SH OPTIONS\nThese may stand before and behind the command.\n";
  for (const auto& option : descriptions.program.options) {
    text += optionText(option, /*isArgument=*/false);
  }
  text += ".SH COMMANDS\n";
  const auto& commands = descriptions.program.commands;
  for (const auto& command : commands) {
    text += commandText(command);
  }
  text +=
      ".SH COMMANDS OF THE SHELL\nBesides those above, but for itself, the shell knows these.\n";
  for (const auto& command : descriptions.shell.commands) {
    if (std::none_of(commands.begin(), commands.end(),
                     [&](const CommandDescription& known) { return known.name == command.name; })) {
      text += commandText(command);
    }
  }
  return text;
}

}  // namespace pavoctl
