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

// The types that the library can express. Other bits never reach the modem.
inline constexpr unsigned apnTypesNamed = 0x8FFF;

// Returns the value's name, or nothing when it has none.
std::optional<std::string> nameOf(pavo::AuthType type);
std::optional<std::string> nameOf(pavo::IPType type);
std::optional<std::string> nameOf(pavo::ApnClass apnClass);
// Returns the name of every bit set, and one hexadecimal number for the bits without a name. The
// result is empty for 0.
std::vector<std::string> namesOfApnTypes(unsigned mask);

// Reads a name in any letter case. Returns nothing for an unknown name.
std::optional<pavo::AuthType> authTypeNamed(std::string_view name);
std::optional<pavo::IPType> ipTypeNamed(std::string_view name);
std::optional<pavo::ApnClass> apnClassNamed(std::string_view name);
std::optional<pavo::ApnTypes> apnTypeNamed(std::string_view name);

// Returns "NONE, PAP, CHAP, PAP_CHAP", for messages and help.
std::string authTypeNames();
std::string ipTypeNames();
std::string apnClassNames();
std::string apnTypeNames();

}  // namespace pavoctl
