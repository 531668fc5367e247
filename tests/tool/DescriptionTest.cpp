// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests compare the manual page, the completion script and the description for programs with
// the program's own help. Nothing may be missing and nothing may be added.
#include "CommandLine.h"
#include "Tool.h"
#include "manual/Description.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

namespace pavo::test {
namespace {

using Names = std::set<std::string>;
// The map holds each command's options. The options of all commands stand under "".
using Commands = std::map<std::string, Names>;
using testing::HasSubstr;
using Json = nlohmann::json;

constexpr const char* anywhere = "";

std::string toolOutput(const Arguments& arguments, const std::string& input = "") {
  const ToolResult result = runTool("/nonexistent", arguments, input);
  EXPECT_EQ(result.exit.code, 0) << result;
  return result.output;
}

// Returns the matches of the pattern's first group, line by line.
Names matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern, std::regex::ECMAScript | std::regex::multiline);
  Names found;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

Names optionsInHelp(const std::string& help) { return matches(help, "^  (?:-.,)?(--[a-z-]+)"); }

// Returns the commands in the program's own --help, with the options in the help of each.
Commands inHelp(const std::function<std::string(const std::string& command)>& helpOf) {
  const std::string help = helpOf("");
  Commands commands{{anywhere, optionsInHelp(help)}};
  const std::string list = help.substr(help.find("\nSubcommands:\n"));
  for (const auto& name : matches(list.substr(0, list.find("\n\n")), "^  ([a-z-]+)")) {
    Names& options = commands[name];
    for (const auto& option : optionsInHelp(helpOf(name))) {
      if (!commands[anywhere].contains(option)) {
        options.insert(option);
      }
    }
  }
  return commands;
}

Commands programsHelp() {
  static const Commands commands = inHelp([](const std::string& command) {
    return toolOutput(command.empty() ? Arguments{"--help"} : Arguments{command, "--help"});
  });
  return commands;
}

Commands shellsHelp() {
  return inHelp(
      [](const std::string& command) { return toolOutput({"shell"}, "help " + command + "\n"); });
}

Names longOnes(const Json& options) {
  Names names;
  for (const auto& option : options) {
    for (const std::string name : option["names"]) {
      if (name.rfind("--", 0) == 0) {
        names.insert(name);
      }
    }
  }
  return names;
}

Commands inJson(const Json& description) {
  Commands commands{{anywhere, longOnes(description["options"])}};
  for (const auto& command : description["commands"]) {
    commands[command["name"]] = longOnes(command["options"]);
  }
  return commands;
}

// Returns the options under each .SS; the options before the first .SS stand under "".
Commands inManual(const std::string& page) {
  const std::string plain = std::regex_replace(page, std::regex(R"(\\-)"), "-");
  Commands commands;
  std::string command = anywhere;
  std::istringstream lines(plain);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, std::regex(R"(\.SS "([a-z-]+).*)"))) {
      command = match[1];
      commands[command];
    } else if (std::regex_search(line, match, std::regex(R"(^\\fB(?:-., )?(--[a-z-]+)\\fR)"))) {
      commands[command].insert(match[1]);
    }
  }
  return commands;
}

// Returns bash's offers while the last of the words is being typed.
Names offered(const std::string& script, const Arguments& words) {
  const TemporaryFolder folder;
  Arguments command{"bash", "-c",
                    "source \"$1\"; shift; COMP_WORDS=(pavoctl \"$@\"); COMP_CWORD=$#; _pavoctl;"
                    "printf '%s\\n' \"${COMPREPLY[@]}\"",
                    "bash", writeFile(folder, "script", script)};
  command.insert(command.end(), words.begin(), words.end());
  ChildProcess bash(command);
  const ToolResult result = finish(bash);
  EXPECT_EQ(result.exit.code, 0) << result;
  EXPECT_EQ(result.errors, "");
  return matches(result.output, "^(.+)$");
}

TEST(Description, Json_CommandsAndOptions_AreThoseOfTheHelp) {
  const Json description = Json::parse(toolOutput({"--describe", "json"}));
  EXPECT_EQ(inJson(description["program"]), programsHelp());
  EXPECT_EQ(inJson(description["shell"]), shellsHelp());
  EXPECT_GE(programsHelp().size(), 11U);
  EXPECT_TRUE(programsHelp().at("import").contains("--check"));
}

TEST(Description, Manual_CommandsAndOptions_AreThoseOfTheHelp) {
  Commands all = shellsHelp();
  all.merge(programsHelp());
  EXPECT_EQ(inManual(toolOutput({"--describe", "man"})), all);
}

TEST(Description, Bash_CommandsAndOptions_AreThoseOfTheHelp) {
  const std::string script = toolOutput({"--describe", "bash"});
  const Commands help = programsHelp();
  Names commands;
  for (const auto& [command, options] : help) {
    Names expected = options;
    expected.insert(help.at(anywhere).begin(), help.at(anywhere).end());
    Arguments words{"--json", "--timeout", "3"};
    if (command != anywhere) {
      commands.insert(command);
      words.push_back(command);
    }
    words.push_back("--");
    EXPECT_EQ(offered(script, words), expected) << command;
  }
  EXPECT_EQ(offered(script, {""}), commands);
  EXPECT_EQ(offered(script, {"--timeout", "list", ""}), commands);
}

TEST(Description, Bash_Values_AreOffered) {
  const std::string script = toolOutput({"--describe", "bash"});
  EXPECT_EQ(offered(script, {"add", "--auth", "P"}), (Names{"PAP", "PAP_CHAP"}));
  // bash splits --auth=P into three words.
  EXPECT_EQ(offered(script, {"add", "--auth", "=", "P"}), (Names{"PAP", "PAP_CHAP"}));
  EXPECT_EQ(offered(script, {"list", "--pavo", "="}), (Names{"yes", "no"}));
  EXPECT_EQ(offered(script, {"add", "--password", ""}), Names{});
  EXPECT_EQ(offered(script, {"--describe", ""}), (Names{"json", "man", "bash"}));
  EXPECT_EQ(offered(script, {"get", ""}), Names{});
  const TemporaryFolder folder;
  const std::string path = writeFile(folder, "a.xml", "");
  EXPECT_EQ(offered(script, {"import", folder.file("a")}), Names{path});
}

TEST(Description, UnknownForm_IsBadUsage) {
  const ToolResult result = runTool("/nonexistent", {"--describe", "html"});
  EXPECT_EQ(result.exit.code, 2);
  EXPECT_EQ(result.errors, "pavoctl: --describe: 'html' is not json, man or bash\n");
}

#ifdef PAVOCTL_DOCUMENTS
std::string fileText(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Description, BuiltDocuments_AreUpToDateAndWhole) {
  const std::string folder = PAVOCTL_DOCUMENTS;
  const std::string page = fileText(folder + "/pavoctl.1");
  EXPECT_THAT(page, HasSubstr(toolOutput({"--describe", "man"})));
  EXPECT_THAT(page, testing::StartsWith(".TH PAVOCTL 1"));
  EXPECT_THAT(page, HasSubstr(".SH EXIT STATUS"));
  EXPECT_THAT(page, testing::Not(HasSubstr("@")));
  EXPECT_EQ(fileText(folder + "/pavoctl.bash"), toolOutput({"--describe", "bash"}));
  ChildProcess groff({"groff", "-man", "-Tutf8", "-ww", "-z", folder + "/pavoctl.1"});
  const ToolResult result = finish(groff);
  EXPECT_EQ(result.exit.code, 0);
  EXPECT_EQ(result.errors, "");
}
#endif

}  // namespace
}  // namespace pavo::test
