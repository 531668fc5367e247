// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Turns an entry of an APN list into a profile of the library.
#pragma once

#include <pavo/ProfileParams.h>

#include "lists/ApnFile.h"

#include <string>
#include <vector>

namespace pavoctl {

struct MappedApn {
  pavo::ProfileParams params;
  // Each setting that the profile could not take over has one sentence here.
  std::vector<std::string> notes;
  // The reason why no profile can be made of the entry; empty when one can.
  std::string refusal;
};

// Absent attributes mean the same as on Android. No type or an empty type means every type but the
// special ones, as "*" does. No protocol means IP. No authtype means PAP or CHAP when there is a
// user name. The carrier's name is not taken over, because the profile's own name is the library's
// mark.
MappedApn mapApn(const ApnEntry& entry);

}  // namespace pavoctl
