// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "VerbRegistry.h"

#include <CLI/CLI.hpp>

#include <string_view>
#include <utility>

namespace pavoctl {

namespace {

constexpr std::string_view footerEnd = "\nGlobal options: see pavoctl --help";

}  // namespace

std::string VerbRegistry::footerOf(const CLI::App& verb) {
  const std::string footer = verb.get_footer();
  return footer.substr(1, footer.size() - 1 - footerEnd.size());
}

CLI::App& VerbRegistry::add(const Verb& verb, Check check) {
  CLI::App* added = app.add_subcommand(verb.name, verb.help);
  added->fallthrough();
  added->footer("\n" + verb.footer + std::string(footerEnd));
  // The callback lives longer than this registry. It refers to the line, and the line lives longer
  // still.
  added->callback(
      [&parsed = line, name = verb.name, action = verb.action, check = std::move(check)] {
        parsed.verb = name;
        parsed.action = action;
        if (check) {
          check();
        }
      });
  return *added;
}

}  // namespace pavoctl
