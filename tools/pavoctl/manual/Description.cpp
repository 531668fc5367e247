// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "manual/Description.h"

#include "Options.h"
#include "Text.h"
#include "VerbRegistry.h"
#include "profiles/Names.h"
#include "profiles/Profile.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace pavoctl {
namespace {

std::vector<std::string> listed(const std::string& list, const char* separators) {
  std::vector<std::string> words;
  for (const auto part : split(list, separators)) {
    words.emplace_back(trimmed(part));
  }
  return words;
}

std::vector<std::string> valuesOf(const std::string& kind) {
  if (kind == kindOf::authType) {
    return listed(authTypeNames(), ",");
  }
  if (kind == kindOf::ipType) {
    return listed(ipTypeNames(), ",");
  }
  if (kind == kindOf::apnClass) {
    return listed(apnClassNames(), ",");
  }
  if (kind == kindOf::apnTypes) {
    return listed(apnTypeNames() + ",NONE", ",");
  }
  // The kind itself names alternatives. One in capitals stands for a value that the user knows.
  auto values =
      kind.find('|') == std::string::npos ? std::vector<std::string>() : listed(kind, "|");
  std::erase_if(values, [](const std::string& value) { return value != lowerCase(value); });
  return values;
}

OptionDescription describe(const CLI::Option& option) {
  OptionDescription described;
  for (const auto& name : option.get_snames()) {
    described.names.push_back("-" + name);
  }
  for (const auto& name : option.get_lnames()) {
    described.names.push_back("--" + name);
  }
  if (described.names.empty()) {
    described.names.push_back(option.get_name(/*positional=*/true));
  }
  described.kind = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
  described.values = valuesOf(described.kind);
  described.help = option.get_description();
  described.group = option.get_group();
  return described;
}

void describeOptions(const CLI::App& app, std::vector<OptionDescription>& options,
                     std::vector<OptionDescription>& arguments) {
  for (const CLI::Option* option : app.get_options()) {
    (option->get_positional() ? arguments : options).push_back(describe(*option));
  }
}

Json toJson(const std::vector<OptionDescription>& options) {
  Json json = Json::array();
  for (const auto& option : options) {
    json.push_back(Json{{"names", option.names},
                        {"kind", option.kind},
                        {"values", option.values},
                        {"help", option.help},
                        {"group", option.group}});
  }
  return json;
}

Json toJson(const Description& description) {
  Json commands = Json::array();
  for (const auto& command : description.commands) {
    commands.push_back(Json{{"name", command.name},
                            {"help", command.help},
                            {"text", command.text},
                            {"options", toJson(command.options)},
                            {"arguments", toJson(command.arguments)}});
  }
  return Json{
      {"help", description.help}, {"options", toJson(description.options)}, {"commands", commands}};
}

}  // namespace

bool CommandDescription::hasOption(const std::string& option) const {
  return std::any_of(options.begin(), options.end(), [&](const OptionDescription& known) {
    return std::find(known.names.begin(), known.names.end(), option) != known.names.end();
  });
}

Description describe(const CLI::App& app) {
  Description description;
  description.help = app.get_description();
  std::vector<OptionDescription> none;
  describeOptions(app, description.options, none);
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    CommandDescription& command = description.commands.emplace_back();
    command.name = verb->get_name();
    command.help = verb->get_description();
    command.text = VerbRegistry::footerOf(*verb);
    describeOptions(*verb, command.options, command.arguments);
    // The parser repeats global options such as --help under each command. They are listed once,
    // with the program.
    std::erase_if(command.options, [&](const OptionDescription& option) {
      return std::any_of(
          description.options.begin(), description.options.end(),
          [&](const OptionDescription& general) { return general.names == option.names; });
    });
  }
  return description;
}

std::string describeInJson(const Descriptions& descriptions) {
  return dumpJson(
             Json{{"program", toJson(descriptions.program)}, {"shell", toJson(descriptions.shell)}},
             /*indent=*/2) +
         "\n";
}

}  // namespace pavoctl
