// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads option values. Every function throws UsageError, with the option's name, for a value that
// it cannot read.
#pragma once

#include <pavo/ProfileParams.h>
#include <pavo/ProfileTypes.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace pavoctl {

// The modem's limits. The library would cut longer texts silently, so the tool refuses them.
using pavo::apnNameBytesMax;
using pavo::passwordBytesMax;
using pavo::userNameBytesMax;
inline constexpr std::int64_t profileIndexMax = 255;
inline constexpr std::int64_t pdnValueMax = 65535;

// Reads a decimal number, or a hexadecimal one after 0x, without blanks or trailing text.
std::int64_t parseNumber(std::string_view option, std::string_view text, std::int64_t min,
                         std::int64_t max);
// Reads seconds with an optional fraction, above 0 and at most an hour. Returns milliseconds.
std::int64_t parseSeconds(std::string_view option, std::string_view text);
// Reads yes, no, true, false, on, off, 1 or 0.
bool parseFlag(std::string_view option, std::string_view text);
std::string parseText(std::string_view option, std::string_view text, std::size_t bytesMax);
// These read the name or the number of a value.
pavo::AuthType parseAuthType(std::string_view option, std::string_view text);
pavo::IPType parseIpType(std::string_view option, std::string_view text);
pavo::ApnClass parseApnClass(std::string_view option, std::string_view text);
// Reads names joined by | or , (NONE alone for no bit), or a number.
unsigned parseApnTypes(std::string_view option, std::string_view text);
// Reads five or six digits.
std::string parsePlmn(std::string_view option, std::string_view text);

}  // namespace pavoctl
