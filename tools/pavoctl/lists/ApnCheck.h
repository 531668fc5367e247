// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Looks for mistakes in an APN list.
#pragma once

#include "lists/ApnFile.h"

#include <string>
#include <vector>

namespace pavoctl {

struct Finding {
  unsigned long line = 0;
  const char* kind =
      "";  // for programs: unknown, missing, value, text, duplicate, case, credentials
  std::string text;
};

// Returns the findings by line. root is the file, and entries is the result of readApnFile().
std::vector<Finding> checkApnList(const XmlElement& root, const std::vector<ApnEntry>& entries);

}  // namespace pavoctl
