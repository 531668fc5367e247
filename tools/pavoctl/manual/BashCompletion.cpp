// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Text.h"
#include "manual/Description.h"

#include <algorithm>
#include <set>

namespace pavoctl {
namespace {

// The part of the script that does not depend on the tool's options. Blanks separate the words.
// The tool's words hold no blank and no character that the shell would expand.
constexpr const char* body = R"sh(
_pavoctl() {
  local current=${COMP_WORDS[COMP_CWORD]} option='' verb='' words='' files='' i
  local before=${COMP_WORDS[COMP_CWORD - 1]}
  # --option=value comes as three words.
  if [[ $current == '=' ]]; then
    option=$before current=''
  elif [[ $before == '=' ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  else
    option=$before
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if _pavoctl_takes_value "${COMP_WORDS[i]}"; then
      [[ ${COMP_WORDS[i + 1]-} != '=' ]] || ((++i))
      ((++i))
    elif [[ ${COMP_WORDS[i]} != -* ]]; then
      verb=${COMP_WORDS[i]}
      break
    fi
  done
  COMPREPLY=()
  if _pavoctl_takes_value "$option"; then
    _pavoctl_values "$option"
  elif [[ $current == -* ]]; then
    _pavoctl_options
  else
    _pavoctl_arguments
  fi
  if [[ -n $files ]]; then
    compopt -o filenames 2> /dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  fi
}
complete -F _pavoctl pavoctl
)sh";

using Options = std::vector<OptionDescription>;

std::string namesOf(const Options& options) {
  std::vector<std::string> names;
  for (const auto& option : options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return join(names, " ");
}

std::string quotedWords(const std::string& words) { return "'" + words + "'"; }

bool isFile(const OptionDescription& option) {
  return option.kind == "FILE" || option.names.front() == "FILE";
}

std::string assignment(const OptionDescription& option) {
  return isFile(option) ? "files=1" : "words=" + quotedWords(join(option.values, " "));
}

// Returns "--timeout|--auth", with every option of every command that takes a value.
std::string valueOptions(const Description& program) {
  std::set<std::string> names;
  const auto collect = [&](const Options& options) {
    for (const auto& option : options) {
      if (!option.kind.empty()) {
        names.insert(option.names.begin(), option.names.end());
      }
    }
  };
  collect(program.options);
  for (const auto& command : program.commands) {
    collect(command.options);
  }
  return join({names.begin(), names.end()}, "|");
}

std::string valueCases(const std::string& verb, const Options& options) {
  std::string text;
  for (const auto& option : options) {
    if (!option.values.empty() || isFile(option)) {
      text += "    '" + verb + " '" + join(option.names, "|'" + verb + " '") + ") " +
              assignment(option) + " ;;\n";
    }
  }
  return text;
}

}  // namespace

std::string describeInBash(const Description& program) {
  std::string takesValue = "_pavoctl_takes_value() {\n  case $1 in\n    " + valueOptions(program) +
                           ") return 0 ;;\n  esac\n  return 1\n}\n";
  std::string values = "_pavoctl_values() {\n  case \"$verb $1\" in\n";
  std::string options = "_pavoctl_options() {\n  case $verb in\n";
  std::string arguments = "_pavoctl_arguments() {\n  case $verb in\n";
  std::vector<std::string> names;
  for (const auto& command : program.commands) {
    names.push_back(command.name);
    values += valueCases(command.name, command.options);
    options += "    " + command.name + ") words=" + quotedWords(namesOf(command.options)) + " ;;\n";
    for (const auto& argument : command.arguments) {
      if (!argument.values.empty() || isFile(argument)) {
        arguments += "    " + command.name + ") " + assignment(argument) + " ;;\n";
      }
    }
  }
  for (const auto& option : program.options) {
    if (!option.values.empty() || isFile(option)) {
      values += "    *' '" + join(option.names, "|*' '") + ") " + assignment(option) + " ;;\n";
    }
  }
  values += "  esac\n}\n";
  options += "  esac\n  words+=" + quotedWords(" " + namesOf(program.options)) + "\n}\n";
  arguments += "    '') words=" + quotedWords(join(names, " ")) + " ;;\n  esac\n}\n";
  return "# Completion of pavoctl's commands, options and values for bash. Made by pavoctl "
         "--describe bash.\n\n" +
         takesValue + values + options + arguments + body;
}

}  // namespace pavoctl
