// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads option values. Every function throws UsageError, naming the option, for what it cannot
// read.
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

// Decimal, or hexadecimal after 0x; no blanks, no trailing text.
std::int64_t parseNumber(std::string_view option, std::string_view text, std::int64_t min,
                         std::int64_t max);
// Seconds with an optional fraction, above 0 and at most an hour; returns milliseconds.
std::int64_t parseSeconds(std::string_view option, std::string_view text);
// yes, no, true, false, on, off, 1, 0.
bool parseFlag(std::string_view option, std::string_view text);
std::string parseText(std::string_view option, std::string_view text, std::size_t bytesMax);
// Names, or the number of a value.
pavo::AuthType parseAuthType(std::string_view option, std::string_view text);
pavo::IPType parseIpType(std::string_view option, std::string_view text);
pavo::ApnClass parseApnClass(std::string_view option, std::string_view text);
// Names joined by | or , (NONE alone for no bit), or a number.
unsigned parseApnTypes(std::string_view option, std::string_view text);
// Five or six digits.
std::string parsePlmn(std::string_view option, std::string_view text);

}  // namespace pavoctl
