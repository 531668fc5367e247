// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Lists of profiles in JSON.
#pragma once

#include <pavo/ProfileParams.h>

#include <list>
#include <string>

namespace pavoctl {

// Reads [{"apnName": "internet", ...}, ...] from a file, or from standard input when it is "-".
// Throws Failure when it cannot be read and UsageError, naming the element, when it makes no sense.
std::list<pavo::ProfileParams> readProfileList(const std::string& path);

}  // namespace pavoctl
