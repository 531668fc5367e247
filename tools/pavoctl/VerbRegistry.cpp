#include "VerbRegistry.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace pavoctl {

CLI::App& VerbRegistry::add(const Verb& verb, Check check) {
  CLI::App* added = app.add_subcommand(verb.name, verb.help);
  added->fallthrough();
  added->footer("\n" + verb.footer + "\nGlobal options: see pavoctl --help");
  // Outlives this object, but not the line.
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
