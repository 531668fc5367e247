// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Options.h"

#include "profiles/Attributes.h"
#include "profiles/Values.h"

#include <CLI/CLI.hpp>

namespace pavoctl {

CLI::Option* addValue(CLI::App& app, const std::string& name, const std::string& kind,
                      const std::string& help, Taker take) {
  return app
      .add_option(
          name,
          [take = std::move(take)](const CLI::results_t& values) {
            take(values.front());
            return true;
          },
          help)
      ->type_name(kind)
      ->expected(1);
}

void addAttributes(CLI::App& app, pavo::ProfileParams& params) {
  for (const auto& attribute : allAttributes()) {
    addValue(app, attribute.option, attribute.kind, attribute.help,
             [&attribute, &params](const std::string& value) {
               setOnce(attribute, params, attribute.option, value);
             })
        ->group("Attributes");
  }
}

void addDryRun(CLI::App& app, bool& isDryRun) {
  app.add_flag("--dry-run", isDryRun, "Say what would be done; nothing on the modem changes");
}

void addProfileId(CLI::App& app, int& id) {
  addValue(app, "ID", "", "The modem's profile index", [&id](const auto& value) {
    id = static_cast<int>(parseNumber("ID", value, 0, profileIndexMax));
  })->required();
}

}  // namespace pavoctl
