// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/AddProfileParams.h>

#include "DumpText.h"

namespace pavo {

AddProfileParams::AddProfileParams(bool isPersistent, bool isIAProfile)
    : AddProfileParams(ProfileParams(), isPersistent, isIAProfile) {}

AddProfileParams::AddProfileParams(const ProfileParams& params, bool isPersistent, bool isIAProfile)
    : ProfileParams(params), isPersistent(isPersistent) {
  this->isIAProfile = isIAProfile;
}

AddProfileParams::AddProfileParams(const AddProfileParams&) = default;
AddProfileParams& AddProfileParams::operator=(const AddProfileParams&) = default;
AddProfileParams::AddProfileParams(AddProfileParams&&) noexcept = default;
AddProfileParams& AddProfileParams::operator=(AddProfileParams&&) noexcept = default;
AddProfileParams::~AddProfileParams() = default;

bool AddProfileParams::getIsPersistent() const { return isPersistent; }

std::string AddProfileParams::dump() const {
  std::string text = " persist=";
  appendValue(text, isPersistent);
  text += ": ";
  appendTo(text);
  return text;
}

}  // namespace pavo
