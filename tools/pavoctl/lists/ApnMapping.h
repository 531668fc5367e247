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
  // One sentence for what the profile could not take over; nothing is dropped without one.
  std::vector<std::string> notes;
  // Why no profile can be made of the entry; empty when one can.
  std::string refusal;
};

// Attributes that are absent mean what Android makes of them: no or an empty type every type but
// the special ones (as "*" does), no protocol IP, no authtype PAP or CHAP when there is a user
// name. The carrier's name is for people only: the profile's own name is the library's mark.
MappedApn mapApn(const ApnEntry& entry);

}  // namespace pavoctl
