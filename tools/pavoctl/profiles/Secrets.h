// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Keeps passwords off the screen.
#pragma once

#include <string>
#include <string_view>

namespace pavoctl {

enum class Secrets { masked, shown };

inline constexpr std::string_view secretMask = "********";

// Returns a line of the library's dump or log without the password in it.
//
// A password may hold commas, even text that looks like another attribute. So the password ends
// only where the rest of the line consists of attributes, each at most once, with values from their
// small vocabulary. When in doubt more is masked, at worst the rest of the line.
std::string maskPassword(std::string_view line);

}  // namespace pavoctl
