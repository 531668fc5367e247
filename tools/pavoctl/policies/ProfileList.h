// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Lists of profiles in JSON.
#pragma once

#include <pavo/ProfileParams.h>

#include <list>
#include <string>

namespace pavoctl {

// Reads [{"apnName": "internet", ...}, ...] from a file, or from standard input when the path is
// "-". Throws Failure when the list cannot be read, and UsageError when it makes no sense. The
// message names the faulty element.
std::list<pavo::ProfileParams> readProfileList(const std::string& path);

}  // namespace pavoctl
