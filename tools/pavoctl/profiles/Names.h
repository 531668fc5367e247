// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The names of the client enumerations, for reading and for writing.
#pragma once

#include <pavo/ProfileTypes.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// What the library can express; other bits never reach the modem.
inline constexpr unsigned apnTypesNamed = 0x8FFF;

// The value's name, nothing when it has none.
std::optional<std::string> nameOf(pavo::AuthType type);
std::optional<std::string> nameOf(pavo::IPType type);
std::optional<std::string> nameOf(pavo::ApnClass apnClass);
// One element for every bit set, one hexadecimal number for those without a name; empty for 0.
std::vector<std::string> namesOfApnTypes(unsigned mask);

// Letter case does not matter; nothing for an unknown name.
std::optional<pavo::AuthType> authTypeNamed(std::string_view name);
std::optional<pavo::IPType> ipTypeNamed(std::string_view name);
std::optional<pavo::ApnClass> apnClassNamed(std::string_view name);
std::optional<pavo::ApnTypes> apnTypeNamed(std::string_view name);

// "NONE, PAP, CHAP, PAP_CHAP", for messages and help.
std::string authTypeNames();
std::string ipTypeNames();
std::string apnClassNames();
std::string apnTypeNames();

}  // namespace pavoctl
