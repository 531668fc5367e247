// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program is a client of the installed package. Before init the library has an empty cache and
// no log.
#include <pavo/Manager.h>

#include <iostream>
#include <string>
#include <type_traits>
#include <vector>

// A ProfileParams converts to a filter and to a change. The README's example passes it to filter().
using pavo::ProfileParams;
static_assert(std::is_convertible_v<const ProfileParams&, pavo::FilterProfileParams>);
static_assert(std::is_convertible_v<const ProfileParams&, pavo::ModifyProfileParams>);

int main() {
  const std::vector<std::string> dump = pavo::Manager::getInstance().dump();
  for (const std::string& line : dump) {
    std::cout << '"' << line << "\"\n";
  }
  const bool isAsExpected = dump.size() >= 2 && dump[0].empty() && dump[1] == "Logs:";
  return isAsExpected ? 0 : 1;
}
